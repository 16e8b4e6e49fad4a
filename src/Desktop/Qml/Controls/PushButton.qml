import QtQuick
import QtQuick.Controls.Basic
import Nomely

// A button with words: the page's main one is filled, one that destroys is red.
AbstractButton {
    id: control
    property bool primary: false
    property bool destructive: false
    property string keyHint
    readonly property color ink: !primary ? (destructive ? Theme.bad : Theme.text) : Theme.accentText
    implicitHeight: 32
    implicitWidth: row.implicitWidth + 28
    focusPolicy: Qt.TabFocus
    opacity: enabled ? 1 : 0.45
    Accessible.role: Accessible.Button
    Accessible.name: text
    background: Rectangle {
        radius: 8
        color: control.primary ? (control.destructive ? Theme.bad : Theme.accent) : control.down ? Theme.line : control.hovered ? Theme.hover : "transparent"
        border { width: control.primary ? 0 : 1; color: Theme.lineStrong }
        Rectangle { anchors.fill: parent; radius: 8; visible: control.primary && (control.hovered || control.down); color: control.down ? "#28000000" : "#14000000" }
        FocusRing { target: control }
    }
    contentItem: Item {
        Row {
            id: row
            anchors.centerIn: parent
            spacing: 8
            Text { text: control.text; color: control.ink; font { family: Theme.sans; pixelSize: Theme.normal; bold: control.primary } }
            Text { visible: control.keyHint; anchors.verticalCenter: parent.verticalCenter; text: control.keyHint; color: control.ink; opacity: 0.85; font { family: Theme.sans; pixelSize: Theme.tiny } }
        }
    }
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
}
