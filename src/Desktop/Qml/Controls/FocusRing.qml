import QtQuick
import QtQuick.Templates as T
import Nomely

// Shows where the keyboard is.
Rectangle {
    property Item target: parent
    anchors.fill: parent
    anchors.margins: -2
    visible: target instanceof T.Control && (target as T.Control).visualFocus
    radius: 10
    color: "transparent"
    border { width: 2; color: Theme.accent }
}
