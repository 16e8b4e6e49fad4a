import QtQuick
import QtQuick.Controls.Basic
import Nomely

Menu {
    id: menu
    padding: 6
    implicitWidth: 212
    background: Rectangle { radius: 10; color: Theme.raised; border { width: 1; color: Theme.line } }
    enter: Transition { NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.motion } }
    delegate: MenuRow {}
}
