import QtQuick
import Nomely

// A page other than the timeline: a title with a way back, actions at its right, and a column.
FocusScope {
    id: page
    property string title
    property string note
    property int columnWidth: Theme.column
    property real topInset: 0
    property alias actions: actionRow.data
    default property alias content: body.data
    readonly property bool narrow: width < 560
    readonly property real column: Math.min(columnWidth, width - (narrow ? 24 : 48))
    signal backAsked()
    Accessible.role: Accessible.Pane
    Accessible.name: title
    Rectangle { anchors.fill: parent; color: Theme.window }
    Item {
        id: bar
        width: parent.width
        height: page.narrow ? 52 : 68
        IconButton { id: backButton; objectName: "back"; x: Math.max(8, (parent.width - page.column) / 2 - 40); anchors.verticalCenter: parent.verticalCenter; glyph: "left"; hint: qsTr("返回") + "  Esc"; onClicked: page.backAsked() }
        Row {
            x: Math.max(backButton.x + 40, (parent.width - page.column) / 2)
            anchors.verticalCenter: parent.verticalCenter
            spacing: 12
            Text { text: page.title; color: Theme.text; font { family: Theme.serif; pixelSize: page.narrow ? Theme.heading : Theme.title; bold: true } }
            Text { anchors.baseline: parent.children[0].baseline; visible: !page.narrow; text: page.note; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
        }
        Row { id: actionRow; anchors { right: parent.right; rightMargin: Math.max(8, (parent.width - page.column) / 2); verticalCenter: parent.verticalCenter } spacing: 8 }
    }
    Item { id: body; anchors { top: bar.bottom; topMargin: page.topInset; bottom: parent.bottom; horizontalCenter: parent.horizontalCenter } width: page.column }
}
