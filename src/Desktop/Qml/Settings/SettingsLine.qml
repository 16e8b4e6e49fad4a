import QtQuick
import Nomely

// What is set, a word about it, and the control; below each other where there is no room.
Item {
    id: line
    property string text
    property string note
    property bool isLast: false
    default property alias control: place.data
    readonly property bool stacked: width < 480 && place.width > 180
    width: parent ? parent.width : 400
    implicitHeight: (stacked ? words.height + place.height + 10 : Math.max(words.height, place.height)) + 24
    Column {
        id: words
        x: 18
        y: line.stacked ? 12 : (line.height - height) / 2
        width: line.width - 36 - (line.stacked ? 0 : place.width + 16)
        spacing: 3
        Text { width: parent.width; text: line.text; color: Theme.text; wrapMode: Text.Wrap; font { family: Theme.sans; pixelSize: Theme.normal } }
        Text { visible: text; width: parent.width; text: line.note; color: Theme.text3; wrapMode: Text.Wrap; lineHeight: 1.1; font { family: Theme.sans; pixelSize: Theme.small } }
    }
    Row {
        id: place
        x: line.stacked ? 18 : line.width - width - 18
        y: line.stacked ? words.y + words.height + 10 : (line.height - height) / 2
        spacing: 8
    }
    Rectangle { visible: !line.isLast; anchors { left: parent.left; right: parent.right; bottom: parent.bottom; leftMargin: 18; rightMargin: 18 } height: 1; color: Theme.line }
}
