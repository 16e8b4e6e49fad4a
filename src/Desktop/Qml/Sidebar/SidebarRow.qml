import QtQuick
import QtQuick.Controls.Basic
import Nomely

// A list of the sidebar with the number of its notes.
AbstractButton {
    id: row
    property string glyph
    property string emoji
    property color dot: Theme.lineStrong
    property string memos
    property int depth: 0
    property bool isCurrent: false
    property bool opens: false
    property bool isOpen: false
    property bool isMarked: false
    readonly property int indent: depth * 18
    signal toggleAsked()
    signal menuAsked()
    implicitHeight: 31
    focusPolicy: Qt.TabFocus
    Accessible.role: Accessible.ListItem
    Accessible.name: memos ? qsTr("%1，%2 条").arg(text).arg(memos) : text
    Accessible.selected: isCurrent
    Keys.onReturnPressed: row.clicked()
    Keys.onEnterPressed: row.clicked()
    background: Item {
        HoverHandler { cursorShape: Qt.PointingHandCursor }
        Rectangle {
            width: parent.width
            height: 30
            radius: 8
            color: row.isCurrent ? Theme.card : row.hovered || row.down ? Theme.hover : "transparent"
            border { width: row.isCurrent && !Theme.dark ? 1 : 0; color: Theme.line }
        }
        Rectangle { visible: row.visualFocus || row.isMarked; width: parent.width; height: 30; radius: 8; color: "transparent"; border { width: 2; color: Theme.accent } }
    }
    contentItem: Item {
        Icon { visible: row.glyph; x: 12; y: 7; name: row.glyph; size: 17; tint: row.isCurrent ? Theme.accent : Theme.text2 }
        Text { visible: row.emoji; x: 11 + row.indent; width: 20; height: 30; horizontalAlignment: Text.AlignHCenter; verticalAlignment: Text.AlignVCenter; text: row.emoji; font { family: Theme.emoji; pixelSize: 14 } }
        Rectangle { visible: !row.glyph && !row.emoji; x: 18 + row.indent; y: 12; width: 7; height: 7; radius: 3.5; color: row.dot }
        Text {
            x: 38 + row.indent
            width: number.x - x - 6
            height: 30
            verticalAlignment: Text.AlignVCenter
            text: row.text
            elide: Text.ElideRight
            color: Theme.text
            font { family: Theme.sans; pixelSize: Theme.normal; bold: row.isCurrent }
        }
        Text { id: number; anchors { right: parent.right; rightMargin: 10 } height: 30; verticalAlignment: Text.AlignVCenter; text: row.memos; color: row.isCurrent ? Theme.accent : Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
    }
    MouseArea { anchors.fill: parent; acceptedButtons: Qt.RightButton; onClicked: row.menuAsked() }
    MouseArea {
        objectName: "fold"
        visible: row.opens
        x: row.indent - 4
        width: 18
        height: 30
        onClicked: row.toggleAsked()
        Icon { anchors.centerIn: parent; name: row.isOpen ? "down" : "right"; size: 10; weight: 2.4; tint: Theme.text3 }
    }
}
