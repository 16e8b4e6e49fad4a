import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Templates as T
import Nomely

// A page that lies over the window until it is answered or left by Esc.
Popup {
    id: sheet
    property string title
    parent: T.Overlay.overlay
    anchors.centerIn: parent
    width: Math.min(parent ? parent.width - 32 : 480, 480)
    padding: 24
    modal: true
    focus: true
    closePolicy: Popup.CloseOnEscape | Popup.CloseOnPressOutside
    background: Rectangle {
        radius: Theme.radius; color: Theme.raised; border { width: 1; color: Theme.line }
        Accessible.role: Accessible.Dialog
        Accessible.name: sheet.title
    }
    T.Overlay.modal: Rectangle { color: Theme.scrim }
    enter: Transition { NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.motion } }
    exit: Transition { NumberAnimation { property: "opacity"; from: 1; to: 0; duration: Theme.motion } }
}
