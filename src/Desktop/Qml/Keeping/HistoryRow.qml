import QtQuick
import QtQuick.Controls.Basic
import Nomely

// One version: when it was, and how much changed after it.
ItemDelegate {
    id: row
    required property string timeName
    required property int added
    required property int removed
    required property string note
    property bool chosen: false
    implicitHeight: 34
    focusPolicy: Qt.NoFocus
    Accessible.role: Accessible.ListItem
    Accessible.name: timeName + "，" + summary.text
    Accessible.selected: chosen
    background: Rectangle {
        radius: 8
        color: row.chosen ? Theme.card : row.hovered ? Theme.hover : "transparent"
        border { width: row.chosen ? 1 : 0; color: Theme.line }
    }
    contentItem: Item {
        Text { id: time; x: 0; anchors.verticalCenter: parent.verticalCenter; text: row.timeName; color: Theme.text; font { family: Theme.sans; pixelSize: Theme.normal; bold: row.chosen } }
        Row {
            anchors { right: parent.right; verticalCenter: parent.verticalCenter }
            spacing: 6
            Text { visible: row.note; text: row.note; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
            Text { visible: row.added > 0; text: "+" + row.added; color: Theme.good; font { family: Theme.sans; pixelSize: Theme.small } }
            Text { visible: row.removed > 0; text: "−" + row.removed; color: Theme.bad; font { family: Theme.sans; pixelSize: Theme.small } }
        }
        Text {
            id: summary
            visible: false
            text: (row.note ? row.note + "，" : "") + qsTr("新增 %1 字，删去 %2 字").arg(row.added).arg(row.removed)
        }
    }
}
