import QtQuick
import QtQuick.Dialogs

// Chooses files, by the desktop's own dialog.
FileDialog {
    title: qsTr("添加图片和文件")
    fileMode: FileDialog.OpenFiles
}
