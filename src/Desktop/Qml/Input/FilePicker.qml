import QtQuick
import QtQuick.Dialogs
import Nomely

// Files to be added to a text. The dialog is made when it is first asked for.
Loader {
    id: picker
    required property PendingAttachments attachments
    readonly property bool shown: item !== null && (item as FileDialog).visible
    function open() { active = true; (item as FileDialog).open() }
    active: false
    sourceComponent: FileDialog {
        title: qsTr("添加图片和文件")
        fileMode: FileDialog.OpenFiles
        onAccepted: picker.attachments.add(selectedFiles)
    }
}
