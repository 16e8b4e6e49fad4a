import QtQuick
import QtQuick.Controls.Basic
import Nomely

// The cards.
ListView {
    id: list
    objectName: "timeline"
    required property DesktopScreens screens
    property bool narrow: false
    readonly property real column: Math.min(Theme.column, width - (narrow ? 24 : 48))
    model: screens.timeline.model
    clip: true
    reuseItems: true
    cacheBuffer: 600
    boundsBehavior: Flickable.StopAtBounds
    keyNavigationEnabled: true
    highlightFollowsCurrentItem: false
    currentIndex: -1
    activeFocusOnTab: true
    Accessible.role: Accessible.List
    Accessible.name: screens.timeline.title
    ScrollBar.vertical: FlatScrollBar {}
    footer: Item { width: 1; height: 72 }
    onAtYEndChanged: if (atYEnd && count > 0) screens.timeline.loadMore()
    delegate: Item {
        id: entry
        required property int index
        required property memoHandle memo
        required property string heading
        required property string headingNote
        required property bool expanded
        width: list.width
        height: card.implicitHeight + card.y
        Row {
            id: head
            visible: entry.heading
            x: (parent.width - list.column) / 2 + 2
            y: 16
            spacing: 8
            Text { id: headText; text: entry.heading; color: Theme.text; font { family: Theme.serif; pixelSize: 15; bold: true } }
            Text { anchors.baseline: headText.baseline; text: entry.headingNote; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
        }
        MemoCard {
            id: card
            y: head.visible ? 44 : 12
            width: list.column
            anchors.horizontalCenter: parent.horizontalCenter
            narrow: list.narrow
            memo: entry.memo
            expanded: entry.expanded
            screens: list.screens
            current: entry.ListView.isCurrentItem
            onMenuAsked: from => { menu.memo = entry.memo; menu.popup(from, 0, from.height) }
            onExpandAsked: expanded => list.model.setExpanded(entry.memo.key, expanded)
        }
    }
    CardMenu { id: menu; screens: list.screens }
    Connections {
        target: list.screens.timeline
        function onRevealed(row) { list.positionViewAtIndex(row, ListView.Beginning) }
    }
}
