import QtQuick
import Nomely

// The days of a thread along the month: a line from the first to the last, full where it was written.
Item {
    id: strip
    property int dayBits: 0
    property int dayCount: 31
    property int firstDay: 1
    property int lastDay: 1
    property color tint: Theme.accent
    readonly property real step: width / dayCount
    Rectangle { anchors.verticalCenter: parent.verticalCenter; width: parent.width; height: 1; color: Theme.line }
    Rectangle {
        anchors.verticalCenter: parent.verticalCenter
        x: (strip.firstDay - 0.5) * strip.step
        width: (strip.lastDay - strip.firstDay) * strip.step
        height: 3
        color: Qt.tint(Theme.window, Qt.rgba(strip.tint.r, strip.tint.g, strip.tint.b, 0.35))
    }
    Repeater {
        model: strip.dayCount
        Rectangle {
            required property int index
            visible: (strip.dayBits >> index & 1) === 1
            anchors.verticalCenter: parent.verticalCenter
            x: Math.round(index * strip.step + (strip.step - width) / 2)
            width: Math.max(5, Math.min(12, Math.round(strip.step * 0.7)))
            height: Math.min(12, width + 2)
            radius: Math.min(4, width / 2)
            color: strip.tint
        }
    }
}
