import QtQuick
import QtQuick.Controls.Basic
import Nomely

// The name of a control, and its key, while the pointer rests on it. Made when it does: a window
// has hundreds.
Loader {
    id: hint
    property string text
    property int delay: 600
    active: parent instanceof Control && (parent as Control).hovered && text
    sourceComponent: ToolTip {
        parent: hint.parent
        delay: hint.delay
        visible: true
        contentItem: Text { text: hint.text; color: Theme.toastText; font { family: Theme.sans; pixelSize: Theme.small } }
        background: Rectangle { radius: 6; color: Theme.toast }
    }
}
