import QtQuick
import Nomely

// Shows where the keyboard is.
Rectangle {
    property Item target: parent
    anchors.fill: parent
    anchors.margins: -2
    visible: target && target.visualFocus === true
    radius: 10
    color: "transparent"
    border { width: 2; color: Theme.accent }
}
