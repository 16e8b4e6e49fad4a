import QtQuick
import QtQuick.Controls.Basic
import Nomely

// A box that is checked by a click or by Space.
AbstractButton {
    id: control
    property bool partly: false
    property string label
    implicitWidth: 28
    implicitHeight: 28
    focusPolicy: Qt.TabFocus
    Accessible.role: Accessible.CheckBox
    Accessible.name: label
    Accessible.checked: checked
    background: Item { FocusRing { target: control; radius: 8 } }
    contentItem: Item {
        Rectangle {
            anchors.centerIn: parent
            width: 18; height: 18; radius: 5
            color: control.checked || control.partly ? Theme.accent : control.hovered ? Theme.hover : "transparent"
            border { width: control.checked || control.partly ? 0 : 1; color: Theme.outline }
            Icon { anchors.centerIn: parent; visible: control.checked; name: "tick"; size: 13; weight: 2.6; tint: Theme.accentText }
            Rectangle { anchors.centerIn: parent; visible: control.partly && !control.checked; width: 10; height: 2; radius: 1; color: Theme.accentText }
        }
    }
}
