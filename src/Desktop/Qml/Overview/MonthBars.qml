import QtQuick
import QtQuick.Controls.Basic
import Nomely

// A bar for each day, as high as its share of the fullest one. Weekends lie on a darker ground.
Rectangle {
    id: card
    required property OverviewScreen overview
    readonly property int edge: 18
    height: 176
    radius: Theme.radius
    color: Theme.card
    border { width: 1; color: Theme.line }

    ListView {
        id: bars
        objectName: "bars"
        x: card.edge
        y: 14
        width: parent.width - 2 * card.edge
        height: parent.height - 24
        orientation: ListView.Horizontal
        interactive: false
        activeFocusOnTab: true
        highlightFollowsCurrentItem: false
        currentIndex: -1
        model: card.overview.bars
        readonly property real step: count > 0 ? width / count : width
        Accessible.role: Accessible.List
        Accessible.name: currentItem ? currentItem.Accessible.name : qsTr("每天的笔记数")
        onActiveFocusChanged: if (activeFocus && currentIndex < 0) currentIndex = 0
        Keys.onReturnPressed: card.overview.openDay(currentIndex + 1)
        Keys.onEnterPressed: card.overview.openDay(currentIndex + 1)
        delegate: AbstractButton {
            id: day
            required property int index
            required property int dayNumber
            required property real share
            required property int shade
            required property bool isToday
            required property bool isRest
            required property string label
            readonly property bool isMarked: bars.activeFocus && ListView.isCurrentItem
            required property bool isNamed
            objectName: "bar" + dayNumber
            width: bars.step
            height: bars.height
            focusPolicy: Qt.NoFocus
            Accessible.role: Accessible.ListItem
            Accessible.name: label
            onClicked: card.overview.openDay(dayNumber)
            background: Item {
                Rectangle { visible: day.isRest; width: Math.ceil(parent.width); height: 128; color: Theme.sunken }
                Rectangle { visible: day.hovered || day.isMarked; width: parent.width; height: 128; radius: 4; color: Theme.hover; border { width: day.isMarked ? 2 : 0; color: Theme.accent } }
            }
            contentItem: Item {
                Rectangle {
                    anchors.horizontalCenter: parent.horizontalCenter
                    y: 126 - height
                    width: Math.max(4, Math.min(14, Math.floor(parent.width * 0.62)))
                    height: day.shade > 0 ? Math.max(6, Math.round(116 * day.share)) : 2
                    radius: day.shade > 0 ? Math.min(4, width / 2) : 1
                    color: day.shade > 0 ? Theme.heat[Math.max(2, day.shade)] : Theme.line
                    Behavior on height { NumberAnimation { duration: Theme.motion } }
                }
                Text {
                    visible: day.isNamed
                    anchors.horizontalCenter: parent.horizontalCenter
                    y: 133
                    text: day.dayNumber
                    color: day.isToday ? Theme.accent : Theme.text3
                    font { family: Theme.sans; pixelSize: Theme.tiny; bold: day.isToday }
                }
            }
            Hint { delay: 0; text: day.label }
        }
    }
}
