import QtQuick
import QtQuick.Controls.Basic
import Nomely

// The name of a control, and its key, while the pointer rests on it.
ToolTip {
    id: hint
    delay: 600
    visible: parent instanceof Control && (parent as Control).hovered && text
    contentItem: Text { text: hint.text; color: Theme.toastText; font { family: Theme.sans; pixelSize: Theme.small } }
    background: Rectangle { radius: 6; color: Theme.toast }
}
