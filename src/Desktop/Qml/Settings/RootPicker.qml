import QtQuick
import QtQuick.Dialogs
import Nomely

// Chooses a folder for the notes, by the desktop's own dialog.
FolderDialog {
    required property SettingsScreen settings
    title: qsTr("选择放笔记的文件夹")
    onAccepted: settings.chooseRoot(selectedFolder)
}
