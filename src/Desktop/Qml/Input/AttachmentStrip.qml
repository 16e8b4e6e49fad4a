import QtQuick
import QtQuick.Window
import QtQuick.Controls.Basic
import Nomely

// The files that will go with the text.
Flow {
    id: strip
    required property PendingAttachments attachments
    spacing: 8
    visible: attachments.count > 0
    Repeater {
        model: strip.attachments
        FocusScope {
            id: entry
            required property int index
            required property string name
            required property bool isPicture
            required property string source
            required property string kind
            required property color tint
            objectName: "attachment"
            width: isPicture ? 56 : Math.min(220, Math.ceil(words.implicitWidth) + 70)
            height: 56
            activeFocusOnTab: true
            Accessible.role: Accessible.ListItem
            Accessible.name: name
            Keys.onDeletePressed: strip.attachments.remove(index)
            Rectangle {
                anchors.fill: parent
                radius: 8
                color: Theme.sunken
                border { width: entry.activeFocus ? 2 : entry.isPicture ? 0 : 1; color: entry.activeFocus ? Theme.accent : Theme.line }
            }
            Image {
                anchors { fill: parent; margins: entry.activeFocus ? 2 : 0 }
                visible: entry.isPicture
                source: entry.isPicture ? entry.source + "?radius=" + Math.round(8 * Screen.devicePixelRatio) : ""
                sourceSize: Qt.size(56 * Screen.devicePixelRatio, 56 * Screen.devicePixelRatio) // qmllint disable type
                cache: false
                asynchronous: true
            }
            Rectangle {
                visible: !entry.isPicture
                x: 8
                anchors.verticalCenter: parent.verticalCenter
                width: 28; height: 28; radius: 6
                color: entry.tint
                Text { anchors.centerIn: parent; text: entry.kind.slice(0, 4); color: "#FFFFFF"; font { family: Theme.sans; pixelSize: 8; bold: true } }
            }
            Text {
                id: words
                visible: !entry.isPicture
                x: 44
                width: parent.width - 68
                anchors.verticalCenter: parent.verticalCenter
                text: entry.name
                elide: Text.ElideMiddle
                color: Theme.text
                font { family: Theme.sans; pixelSize: Theme.small }
            }
            AbstractButton {
                objectName: "removeAttachment"
                anchors { right: parent.right; top: parent.top; margins: entry.isPicture ? 3 : 6 }
                width: 16; height: 16
                focusPolicy: Qt.NoFocus
                Accessible.name: qsTr("移除 %1").arg(entry.name)
                onClicked: strip.attachments.remove(entry.index)
                background: Rectangle { radius: 8; color: entry.isPicture ? "#B0000000" : "transparent" }
                contentItem: Item { Icon { anchors.centerIn: parent; name: "close"; size: 10; weight: 3; tint: entry.isPicture ? "#FFFFFF" : Theme.text3 } }
                HoverHandler { cursorShape: Qt.PointingHandCursor }
            }
        }
    }
}
