import QtQuick
import QtQuick.Controls.Basic
import Nomely

AbstractButton {
    id: control
    property string glyph
    property string hint
    property color tint: checked ? Theme.accent : Theme.text2
    property int glyphSize: 18
    implicitWidth: 32
    implicitHeight: 32
    focusPolicy: Qt.TabFocus
    opacity: enabled ? 1 : 0.4
    Accessible.role: Accessible.Button
    Accessible.name: hint
    background: Rectangle {
        radius: 8
        color: control.down ? Theme.line : control.hovered || control.checked ? Theme.hover : "transparent"
        FocusRing { target: control }
    }
    contentItem: Item { Icon { anchors.centerIn: parent; name: control.glyph; tint: control.tint; size: control.glyphSize } }
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    Hint { text: control.hint }
}
