import QtQuick
import Nomely

// Files to be added to a text. The dialog is made when it is first asked for.
Loader {
    id: picker
    required property PendingAttachments attachments
    readonly property bool shown: item !== null && (item as FileDialog).visible
    function open() { active = true; (item as FileDialog).open() }
    active: false
    // By its name, so that a start loads none of what dialogs need.
    source: "OpenFiles.qml"
    Connections {
        target: picker.item
        function onAccepted() { picker.attachments.add(picker.item.selectedFiles) }
    }
}
