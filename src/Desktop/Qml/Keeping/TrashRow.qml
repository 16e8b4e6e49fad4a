import QtQuick
import Nomely

// A deleted note: its old place, the beginning of its text, and what lay with it.
Rectangle {
    id: row
    required property string dateName
    required property string preview
    required property string body
    required property string attachmentNames
    required property bool isChecked
    property bool current: false
    property bool expanded: false
    signal toggled(bool isRange)
    signal opened()
    signal restoreAsked()
    signal removeAsked()
    implicitHeight: content.implicitHeight + 28
    radius: Theme.radius
    color: Theme.card
    border { width: 1; color: current ? Theme.accent : Theme.line }
    Accessible.role: Accessible.ListItem
    Accessible.name: dateName + "，" + (preview || qsTr("没有可显示的文字"))
    Accessible.checkable: true
    Accessible.checked: isChecked

    HoverHandler { id: hover }
    MouseArea {
        anchors.fill: parent
        onClicked: event => event.modifiers & Qt.ShiftModifier ? row.toggled(true) : row.opened()
    }
    CheckMark {
        id: check
        objectName: "trashCheck"
        x: 12; y: 10
        checked: row.isChecked
        label: qsTr("选中 %1").arg(row.dateName)
        focusPolicy: Qt.NoFocus
        MouseArea { anchors.fill: parent; onClicked: event => row.toggled(event.modifiers & Qt.ShiftModifier) }
    }
    Column {
        id: content
        x: 50; y: 14
        width: row.width - x - 20
        spacing: 6
        Item {
            width: parent.width
            height: 20
            Text { anchors.verticalCenter: parent.verticalCenter; text: row.dateName; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
            Row {
                anchors { right: parent.right; verticalCenter: parent.verticalCenter; rightMargin: -8 }
                visible: hover.hovered || row.current
                IconButton { objectName: "trashRestore"; focusPolicy: Qt.NoFocus; glyph: "undo"; hint: qsTr("恢复"); onClicked: row.restoreAsked() }
                IconButton { objectName: "trashRemove"; focusPolicy: Qt.NoFocus; glyph: "trash"; hint: qsTr("永久删除"); onClicked: row.removeAsked() }
            }
        }
        Text {
            objectName: "trashText"
            width: parent.width
            text: row.expanded && row.body ? row.body : row.preview || qsTr("没有可显示的文字")
            textFormat: Text.PlainText
            color: row.preview ? Theme.text : Theme.text3
            wrapMode: Text.Wrap
            maximumLineCount: row.expanded ? 400 : 3
            elide: Text.ElideRight
            lineHeight: Theme.lineHeight / 100
            font { family: Theme.sans; pixelSize: Theme.body }
        }
        Item {
            visible: row.attachmentNames
            width: parent.width
            height: names.implicitHeight
            Icon { y: 2; name: "clip"; size: 13; tint: Theme.text3 }
            Text { id: names; x: 19; width: parent.width - x; text: row.attachmentNames; textFormat: Text.PlainText; color: Theme.text2; wrapMode: Text.Wrap; font { family: Theme.sans; pixelSize: Theme.small } }
        }
    }
}
