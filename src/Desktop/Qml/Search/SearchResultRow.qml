import QtQuick
import QtQuick.Controls.Basic
import Nomely

// A note that was found: when it was written, and the words around the hit.
AbstractButton {
    id: row
    required property int index
    required property string dateText
    required property string time
    required property string snippet
    required property string plainSnippet
    required property string tags
    property bool isCurrent: false
    implicitHeight: lines.height + 18
    focusPolicy: Qt.NoFocus
    Accessible.role: Accessible.ListItem
    Accessible.name: dateText + "，" + time + "，" + plainSnippet + "，" + tags
    Accessible.selected: isCurrent
    background: Rectangle { radius: 8; color: row.isCurrent ? Theme.sunken : row.hovered ? Theme.hover : "transparent"; border { width: row.isCurrent ? 1 : 0; color: Theme.line } HoverHandler { cursorShape: Qt.PointingHandCursor } }
    contentItem: Item {
        Column {
            id: lines
            x: 12
            y: 9
            width: parent.width - 24
            spacing: 3
            Row {
                width: parent.width
                spacing: 8
                Text { id: when; text: row.dateText; color: Theme.text2; font { family: Theme.serif; pixelSize: Theme.small; bold: true } }
                Text { id: hour; anchors.baseline: when.baseline; text: row.time; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
                Text { anchors.baseline: when.baseline; width: Math.max(0, parent.width - x); horizontalAlignment: Text.AlignRight; elide: Text.ElideRight; text: row.tags; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.tiny } }
            }
            Text {
                objectName: "snippet"
                width: parent.width
                height: Math.min(implicitHeight, 2 * 20 + 2)
                clip: true
                wrapMode: Text.WrapAtWordBoundaryOrAnywhere
                textFormat: Text.RichText
                text: row.snippet
                color: Theme.text
                font { family: Theme.sans; pixelSize: Theme.normal }
            }
        }
    }
}
