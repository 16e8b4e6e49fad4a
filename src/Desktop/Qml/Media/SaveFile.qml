import QtQuick
import QtQuick.Dialogs

// Chooses where to save an attachment, by the desktop's own dialog.
FileDialog {
    fileMode: FileDialog.SaveFile
    title: qsTr("另存为")
}
