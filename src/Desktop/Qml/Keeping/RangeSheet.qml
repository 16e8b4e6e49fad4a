import QtQuick
import Nomely

// Chooses days, both included, whose deleted notes are to go for good.
Sheet {
    id: sheet
    required property TrashScreen trash
    objectName: "rangeSheet"
    title: qsTr("按日期范围删除")
    width: Math.min(parent ? parent.width - 32 : 420, 420)
    onAboutToShow: {
        firstField.text = trash.firstDay
        lastField.text = trash.lastDay
    }
    contentItem: Column {
        spacing: 14
        Text { text: sheet.title; color: Theme.text; font { family: Theme.serif; pixelSize: Theme.heading; bold: true } }
        Row {
            width: parent.width
            spacing: 10
            TextInputLine { id: firstField; objectName: "firstDay"; width: (parent.width - 40) / 2; label: qsTr("第一天"); placeholderText: "2026-03-01"; focus: true }
            Text { anchors.verticalCenter: parent.verticalCenter; width: 20; horizontalAlignment: Text.AlignHCenter; text: qsTr("到"); color: Theme.text2; font { family: Theme.sans; pixelSize: Theme.normal } }
            TextInputLine { id: lastField; objectName: "lastDay"; width: (parent.width - 40) / 2; label: qsTr("最后一天"); placeholderText: "2026-03-31" }
        }
        Text { objectName: "rangeCount"; text: sheet.visible ? sheet.trash.countBetween(firstField.text, lastField.text) : ""; color: Theme.text2; font { family: Theme.sans; pixelSize: Theme.small } }
        Row {
            anchors.right: parent.right
            spacing: 10
            PushButton { text: qsTr("取消"); onClicked: sheet.close() }
            PushButton { objectName: "rangeRemove"; text: qsTr("永久删除"); primary: true; destructive: true; onClicked: { sheet.close(); sheet.trash.removeBetween(firstField.text, lastField.text) } }
        }
    }
}
