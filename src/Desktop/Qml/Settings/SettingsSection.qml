import QtQuick
import Nomely

// A heading with its lines in a card.
Column {
    id: section
    property string title
    default property alias rows: lines.data
    width: parent ? parent.width : 400
    spacing: 8
    Text { leftPadding: 2; text: section.title; color: Theme.text; font { family: Theme.serif; pixelSize: 15; bold: true } Accessible.role: Accessible.Heading; Accessible.name: text }
    Rectangle {
        width: parent.width
        height: lines.height + 8
        radius: Theme.radius
        color: Theme.card
        border { width: 1; color: Theme.line }
        Column { id: lines; y: 4; width: parent.width }
    }
}
