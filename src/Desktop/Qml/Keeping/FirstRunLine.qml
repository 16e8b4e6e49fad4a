import QtQuick
import Nomely

// Where the notes will lie, for who starts with none: one line, no questions.
Item {
    id: line
    required property SettingsScreen settings
    objectName: "firstRun"
    visible: settings.isFirstRun
    implicitHeight: visible ? row.height + 20 : 0
    implicitWidth: row.width
    Row {
        id: row
        y: 10
        x: Math.max(2, (line.width - width) / 2)
        spacing: 10
        Text {
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, line.width - change.width - 16)
            elide: Text.ElideMiddle
            text: qsTr("笔记是 %1 里的普通文件").arg(line.settings.rootName)
            color: Theme.text3
            font { family: Theme.sans; pixelSize: Theme.small }
        }
        LinkButton { id: change; objectName: "firstRunChange"; anchors.verticalCenter: parent.verticalCenter; text: qsTr("换个位置"); fontSize: Theme.small; onClicked: picker.open() }
    }
    RootPicker { id: picker; settings: line.settings }
}
