import QtQuick
import Nomely

// A failure, until it is closed: what happened, and the way on where there is one.
Item {
    id: bar
    required property BannerScreen banner
    property int columnWidth: Theme.column
    readonly property bool narrow: width < 560
    readonly property bool shown: banner.error
    implicitHeight: shown ? box.height + 8 : 0
    visible: shown
    Accessible.role: Accessible.AlertMessage
    Accessible.name: banner.error
    Accessible.ignored: !shown
    Rectangle {
        id: box
        objectName: "errorBanner"
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(bar.columnWidth, bar.width - (bar.narrow ? 24 : 48))
        height: Math.max(44, words.implicitHeight + 24)
        radius: 10
        color: Theme.badSoft
        border { width: 1; color: Qt.rgba(Theme.bad.r, Theme.bad.g, Theme.bad.b, 0.35) }
        Icon { x: 14; y: 14; name: "warn"; size: 16; tint: Theme.bad }
        Text {
            id: words
            objectName: "errorText"
            x: 40
            width: box.width - x - side.width - 20
            anchors.verticalCenter: parent.verticalCenter
            text: bar.banner.error
            color: Theme.text
            wrapMode: Text.Wrap
            lineHeight: 1.1
            font { family: Theme.sans; pixelSize: Theme.normal }
            Accessible.ignored: true
        }
        Row {
            id: side
            anchors { right: parent.right; rightMargin: 6; top: parent.top; topMargin: 6 }
            spacing: 10
            Text {
                visible: bar.banner.errorCount > 1
                anchors.verticalCenter: parent.verticalCenter
                text: qsTr("还有 %1 条").arg(bar.banner.errorCount - 1)
                color: Theme.text2
                font { family: Theme.sans; pixelSize: Theme.small }
            }
            LinkButton {
                objectName: "errorAction"
                visible: text
                anchors.verticalCenter: parent.verticalCenter
                text: bar.banner.errorAction
                ink: Theme.bad
                onClicked: bar.banner.actOnError()
            }
            IconButton { objectName: "errorClose"; anchors.verticalCenter: parent.verticalCenter; glyph: "close"; glyphSize: 14; hint: qsTr("关闭"); onClicked: bar.banner.closeError() }
        }
    }
}
