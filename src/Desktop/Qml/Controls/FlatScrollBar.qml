import QtQuick
import QtQuick.Controls.Basic
import Nomely

ScrollBar {
    id: bar
    minimumSize: 0.06
    contentItem: Rectangle {
        implicitWidth: 6
        implicitHeight: 6
        radius: 3
        color: Theme.outline
        opacity: bar.pressed ? 0.9 : bar.active ? 0.5 : 0
        Behavior on opacity { NumberAnimation { duration: Theme.motion } }
    }
}
