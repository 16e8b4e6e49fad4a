import QtQuick
import QtQuick.Controls.Basic
import Nomely

// A button over a dark picture.
AbstractButton {
    id: control
    property string glyph
    property string hint
    property bool overPicture: false
    implicitWidth: 40
    implicitHeight: 40
    focusPolicy: Qt.TabFocus
    Accessible.role: Accessible.Button
    Accessible.name: hint
    background: Rectangle {
        radius: 20
        color: control.hovered || control.down ? Theme.backdropHover : control.overPicture ? Theme.backdropVeil : "transparent"
        border { width: control.visualFocus ? 2 : 0; color: Theme.backdropText }
    }
    contentItem: Item { Icon { anchors.centerIn: parent; name: control.glyph; size: 20; tint: Theme.backdropText } }
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    Hint { text: control.hint }
}
