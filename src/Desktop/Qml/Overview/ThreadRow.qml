import QtQuick
import QtQuick.Controls.Basic
import Nomely

// A thread with its days along the month, or one of its entries.
AbstractButton {
    id: row
    required property int index
    required property bool isThread
    required property string name
    required property string tag
    required property string emoji
    required property string tagColor
    required property string summary
    required property int dayBits
    required property int firstDay
    required property int lastDay
    required property bool isOpen
    required property string when
    required property string preview
    property int dayCount: 31
    property bool narrow: false
    property bool isMarked: false
    signal toggled()
    signal opened()
    objectName: isThread ? "thread" : "threadEntry"
    implicitHeight: !isThread ? 32 : narrow ? 58 : 42
    focusPolicy: Qt.NoFocus
    Accessible.role: Accessible.ListItem
    Accessible.name: isThread ? tag + "，" + summary : when + "，" + preview
    onClicked: act()
    function act() { isThread ? toggled() : opened() }
    background: Rectangle {
        radius: 8
        color: row.hovered ? Theme.hover : "transparent"
        border { width: row.isMarked ? 2 : 0; color: Theme.accent }
        HoverHandler { cursorShape: Qt.PointingHandCursor }
        Rectangle { visible: row.isThread && row.index > 0; x: 8; width: parent.width - 16; height: 1; color: Theme.line }
    }
    contentItem: Item {
        Item {
            visible: row.isThread
            anchors.fill: parent
            Icon { x: 6; y: 16; name: row.isOpen ? "down" : "right"; size: 10; weight: 2.4; tint: Theme.text3 }
            Text { visible: row.emoji; x: 22; width: 20; height: 42; horizontalAlignment: Text.AlignHCenter; verticalAlignment: Text.AlignVCenter; text: row.emoji; font { family: Theme.emoji; pixelSize: 14 } }
            Rectangle { visible: !row.emoji; x: 28; y: 17; width: 8; height: 8; radius: 4; color: row.tagColor || Theme.heat[3] }
            Text { id: label; x: 48; width: (row.narrow ? parent.width - 56 - note.width : 150) - 8; height: 42; verticalAlignment: Text.AlignVCenter; elide: Text.ElideRight; text: row.name; color: Theme.text; font { family: Theme.sans; pixelSize: Theme.normal; bold: true } }
            ThreadStrip {
                x: row.narrow ? 48 : 198
                y: row.narrow ? 40 : 14
                width: row.narrow ? parent.width - 56 : parent.width - 198 - 118
                height: 14
                dayBits: row.dayBits
                dayCount: row.dayCount
                firstDay: row.firstDay
                lastDay: row.lastDay
                tint: row.tagColor || Theme.heat[3]
            }
            Text { id: note; anchors { right: parent.right; rightMargin: 8 } height: 42; verticalAlignment: Text.AlignVCenter; text: row.summary; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
        }
        Item {
            visible: !row.isThread
            anchors.fill: parent
            Text { id: date; x: 48; height: 32; verticalAlignment: Text.AlignVCenter; text: row.when; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
            Text { x: 132; width: parent.width - x - 8; height: 32; verticalAlignment: Text.AlignVCenter; elide: Text.ElideRight; textFormat: Text.PlainText; text: row.preview; color: Theme.text2; font { family: Theme.sans; pixelSize: Theme.normal } }
        }
    }
}
