import QtQuick
import Nomely

// The backup that comes before something is destroyed.
Sheet {
    id: sheet
    required property TrashScreen trash
    objectName: "backupProgress"
    title: qsTr("正在备份")
    width: Math.min(parent ? parent.width - 32 : 400, 400)
    visible: trash.isBackingUp
    closePolicy: Sheet.NoAutoClose
    contentItem: Column {
        spacing: 14
        Text { text: qsTr("删除之前先做一份备份"); color: Theme.text; font { family: Theme.serif; pixelSize: Theme.heading; bold: true } }
        Rectangle {
            width: parent.width
            height: 6
            radius: 3
            color: Theme.line
            Accessible.role: Accessible.ProgressBar
            Accessible.name: qsTr("备份进度")
            Rectangle { width: Math.max(6, parent.width * sheet.trash.backupShare); height: 6; radius: 3; color: Theme.accent }
        }
        PushButton { objectName: "stopBackup"; anchors.right: parent.right; text: qsTr("停止，不删除"); focus: true; onClicked: sheet.trash.stopBackup() }
    }
}
