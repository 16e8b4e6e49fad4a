import QtQuick
import QtQuick.Controls.Basic
import Nomely

// The tags that fit what is typed, below it. The keyboard stays there.
Popup {
    id: popup
    objectName: "tagPopup"
    required property TagChoices completion
    // What they belong to, in the item around.
    required property rect place
    x: place.x - 8
    y: place.y + place.height + 4
    width: 232
    margins: 8
    padding: 5
    focus: false
    closePolicy: Popup.NoAutoClose
    visible: completion.isOpen && parent.visible
    background: Rectangle { radius: 10; color: Theme.raised; border { width: 1; color: Theme.line } }
    contentItem: ListView {
        id: list
        implicitHeight: contentHeight
        model: popup.completion
        currentIndex: popup.completion.current
        interactive: false
        Accessible.role: Accessible.List
        Accessible.name: qsTr("标签")
        delegate: Item {
            id: row
            required property int index
            required property string name
            required property string emoji
            required property string tint
            readonly property bool current: ListView.isCurrentItem
            objectName: "tagRow"
            width: list.width
            height: 30
            Accessible.role: Accessible.ListItem
            Accessible.name: name
            Accessible.selected: current
            Rectangle { anchors.fill: parent; radius: 6; visible: row.current; color: Theme.accentSoft }
            Rectangle {
                x: 11
                anchors.verticalCenter: parent.verticalCenter
                visible: !row.emoji
                width: 8; height: 8; radius: 4
                color: row.tint || Theme.outline
            }
            Text { x: 7; anchors.verticalCenter: parent.verticalCenter; text: row.emoji; font { family: Theme.emoji; pixelSize: 13 } }
            Text {
                x: 32
                width: parent.width - 40
                anchors.verticalCenter: parent.verticalCenter
                text: row.name
                elide: Text.ElideMiddle
                color: row.current ? Theme.accent : Theme.text
                font { family: Theme.sans; pixelSize: Theme.normal }
            }
            HoverHandler { onHoveredChanged: if (hovered) popup.completion.current = row.index }
            TapHandler { onTapped: popup.completion.choose(row.index) }
        }
    }
}
