import QtQuick
import Nomely

// The heading of the day in view, over the cards that scroll below it.
Item {
    id: sticky
    property string text
    property string note
    property real column: Theme.column
    height: 46
    Rectangle { width: parent.width; height: 34; color: Theme.window }
    Rectangle {
        y: 34
        width: parent.width
        height: 12
        gradient: Gradient {
            GradientStop { position: 0; color: Theme.window }
            GradientStop { position: 1; color: Qt.rgba(Theme.window.r, Theme.window.g, Theme.window.b, 0) }
        }
    }
    Row {
        x: (parent.width - sticky.column) / 2 + 2
        y: 7
        spacing: 8
        Text { id: heading; text: sticky.text; color: Theme.text; font { family: Theme.serif; pixelSize: 15; bold: true } Accessible.ignored: true }
        Text { anchors.baseline: heading.baseline; text: sticky.note; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
    }
}
