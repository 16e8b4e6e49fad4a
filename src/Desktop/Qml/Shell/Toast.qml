import QtQuick
import Nomely

// A success or an offer at the foot of the page. It goes by itself, but not while the pointer rests
// on it or the keyboard is there.
Item {
    id: toast
    required property BannerScreen banner
    readonly property bool shown: banner.toast
    readonly property bool hasAction: banner.toastAction
    // What it said last stays while it fades.
    property string message
    property string actionText
    implicitWidth: pill.width
    implicitHeight: 42
    opacity: shown ? 1 : 0
    visible: opacity > 0
    Behavior on opacity { NumberAnimation { duration: Theme.motion } }
    Accessible.role: Accessible.AlertMessage
    Accessible.name: banner.toast
    Accessible.ignored: !shown
    Binding { toast.message: toast.banner.toast; when: toast.shown; restoreMode: Binding.RestoreNone }
    Binding { toast.actionText: toast.banner.toastAction; when: toast.shown; restoreMode: Binding.RestoreNone }
    Binding { toast.banner.isHeld: hover.hovered || action.activeFocus; restoreMode: Binding.RestoreNone }
    Rectangle {
        id: pill
        objectName: "toast"
        width: Math.min(words.implicitWidth + (action.visible ? action.width + 18 : 0) + 36, toast.parent ? toast.parent.width - 24 : 480)
        height: 42
        radius: 21
        color: Theme.toast
        HoverHandler { id: hover; enabled: toast.shown }
        Row {
            anchors { verticalCenter: parent.verticalCenter; left: parent.left; leftMargin: 18 }
            spacing: 18
            Text {
                id: words
                objectName: "toastText"
                anchors.verticalCenter: parent.verticalCenter
                width: Math.min(implicitWidth, pill.width - 36 - (action.visible ? action.width + 18 : 0))
                elide: Text.ElideRight
                text: toast.message
                color: Theme.toastText
                font { family: Theme.sans; pixelSize: Theme.normal }
                Accessible.ignored: true
            }
            LinkButton {
                id: action
                objectName: "toastAction"
                visible: toast.actionText
                anchors.verticalCenter: parent.verticalCenter
                text: toast.actionText
                ink: Theme.toastAction
                font.bold: true
                onClicked: toast.banner.actOnToast()
                Keys.onEscapePressed: toast.banner.closeToast()
            }
        }
    }
}
