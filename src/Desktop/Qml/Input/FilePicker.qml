import QtQuick
import Nomely

// Files to be added to a text. The dialog is made when it is first asked for.
Loader {
    id: picker
    required property PendingAttachments attachments
    readonly property bool shown: item !== null && item.visible // qmllint disable type
    function open() { active = true; item.open() } // qmllint disable type
    active: false
    // By its name, so that a start loads none of what dialogs need.
    source: "OpenFiles.qml"
    Connections {
        target: picker.item
        function onAccepted() { picker.attachments.add(picker.item.selectedFiles) } // qmllint disable type
    }
}
