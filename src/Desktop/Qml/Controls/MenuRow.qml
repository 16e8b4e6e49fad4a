import QtQuick
import QtQuick.Controls.Basic
import Nomely

MenuItem {
    id: row
    property string glyph
    property string keyHint
    property bool destructive: false
    readonly property color ink: destructive ? Theme.bad : Theme.text
    implicitHeight: visible ? 32 : 0
    opacity: enabled ? 1 : 0.4
    Accessible.role: Accessible.MenuItem
    Accessible.name: text
    background: Rectangle { radius: 6; color: row.highlighted ? Theme.hover : "transparent" }
    arrow: Icon { visible: row.subMenu; x: row.width - 22; anchors.verticalCenter: parent.verticalCenter; name: "right"; size: 12 }
    indicator: Item {}
    contentItem: Item {
        Icon { visible: row.glyph; x: 4; anchors.verticalCenter: parent.verticalCenter; name: row.glyph; size: 16; tint: row.destructive ? Theme.bad : Theme.text2 }
        Text { x: 30; anchors.verticalCenter: parent.verticalCenter; width: parent.width - 30 - keyText.width; text: row.text; elide: Text.ElideRight; color: row.ink; font { family: Theme.sans; pixelSize: Theme.normal } }
        Text { id: keyText; anchors { right: parent.right; rightMargin: 4; verticalCenter: parent.verticalCenter } text: row.keyHint; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.tiny } }
        Icon { visible: row.checked; anchors { right: parent.right; rightMargin: 4; verticalCenter: parent.verticalCenter } name: "tick"; size: 14; tint: Theme.accent }
    }
}
