import QtQuick
import QtQuick.Controls.Basic
import Nomely

// The box of a check item.
AbstractButton {
    id: box
    property string label
    implicitWidth: 16
    implicitHeight: 16
    focusPolicy: Qt.TabFocus
    Accessible.role: Accessible.CheckBox
    Accessible.name: label
    Accessible.checkable: true
    Accessible.checked: checked
    background: Rectangle {
        radius: 5
        color: box.checked ? Theme.accent : box.hovered ? Theme.hover : "transparent"
        border { width: box.checked ? 0 : 1; color: box.hovered ? Theme.accent : Theme.outline }
        FocusRing { target: box; anchors.margins: -3; radius: 8 }
    }
    contentItem: Item {
        Icon { visible: box.checked; anchors.centerIn: parent; name: "tick"; size: 12; tint: Theme.accentText }
    }
    HoverHandler { cursorShape: Qt.PointingHandCursor }
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
}
