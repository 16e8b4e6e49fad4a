import QtQuick
import Nomely

// Why nothing can be read or saved for the moment. What is typed stays underneath.
Rectangle {
    id: obstacle
    property string text
    color: Theme.window
    opacity: 0.96
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text
    MouseArea { anchors.fill: parent; hoverEnabled: true }
    EmptyState { anchors.centerIn: parent; glyph: "warn"; text: obstacle.text; note: qsTr("写下的文字还在，数据目录回来后会接着保存。") }
}
