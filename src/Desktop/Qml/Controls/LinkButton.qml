import QtQuick
import QtQuick.Controls.Basic
import Nomely

// Words in the accent's colour that do something.
AbstractButton {
    id: control
    property color ink: Theme.accent
    property int fontSize: Theme.normal
    implicitWidth: label.implicitWidth
    implicitHeight: label.implicitHeight + 4
    focusPolicy: Qt.TabFocus
    Accessible.role: Accessible.Button
    Accessible.name: text
    background: Item { FocusRing { target: control; radius: 6 } }
    contentItem: Text { id: label; text: control.text; color: control.ink; verticalAlignment: Text.AlignVCenter; font { family: Theme.sans; pixelSize: control.fontSize; underline: control.hovered } }
    HoverHandler { cursorShape: Qt.PointingHandCursor }
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
}
