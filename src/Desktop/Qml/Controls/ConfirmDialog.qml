import QtQuick
import Nomely

// Asks before something that can't be taken back.
Sheet {
    id: dialog
    property string text
    property string confirmText: qsTr("确认")
    property bool destructive: true
    signal accepted()
    contentItem: Column {
        spacing: 14
        Text { objectName: "questionTitle"; width: parent.width; text: dialog.title; color: Theme.text; wrapMode: Text.Wrap; font { family: Theme.serif; pixelSize: Theme.heading; bold: true } }
        Text { visible: text; width: parent.width; text: dialog.text; color: Theme.text2; wrapMode: Text.Wrap; lineHeight: 1.15; font { family: Theme.sans; pixelSize: Theme.normal } }
        Row {
            anchors.right: parent.right
            spacing: 10
            topPadding: 4
            PushButton { objectName: "cancel"; text: qsTr("取消"); focus: true; onClicked: dialog.close() }
            PushButton { objectName: "confirm"; text: dialog.confirmText; primary: true; destructive: dialog.destructive; onClicked: { dialog.accepted(); dialog.close() } }
        }
    }
}
