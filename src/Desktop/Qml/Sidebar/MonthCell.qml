import QtQuick
import Nomely

// A day of the month's grid; empty outside the month.
Item {
    id: cell
    required property int index
    required property int dayNumber
    required property int shade
    required property bool isToday
    required property bool isChosen
    required property bool isAhead
    required property string label
    property bool isCursor: false
    signal triggered()
    objectName: "day" + dayNumber
    visible: dayNumber > 0
    Accessible.role: Accessible.Button
    Accessible.name: label
    Accessible.onPressAction: triggered()

    Rectangle {
        anchors.centerIn: parent
        width: 26
        height: 26
        radius: 8
        color: cell.shade > 0 ? Theme.heat[cell.shade] : pointer.hovered ? Theme.hover : "transparent"
        border { width: cell.isChosen ? 2 : cell.isToday ? 1 : 0; color: Theme.accent }
        Text {
            anchors.centerIn: parent
            text: cell.dayNumber
            color: cell.shade > 0 ? Theme.heatText[cell.shade] : cell.isAhead ? Theme.lineStrong : Theme.text3
            font { family: Theme.sans; pixelSize: Theme.small; bold: cell.isToday }
        }
    }
    Rectangle {
        anchors.centerIn: parent
        visible: cell.isCursor
        width: 32
        height: 32
        radius: 10
        color: "transparent"
        border { width: 2; color: Theme.accent }
    }
    HoverHandler { id: pointer; cursorShape: Qt.PointingHandCursor }
    TapHandler { onTapped: cell.triggered() }
}
