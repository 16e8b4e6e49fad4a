import QtQuick
import Nomely

// A row of the timeline: a heading where a day begins, and a card.
Item {
    id: row
    required property int index
    required property memoHandle memo
    required property string heading
    required property string headingNote
    required property bool expanded
    required property DesktopScreens screens
    property real column: Theme.column
    property bool narrow: false
    property bool hasKeys: false
    readonly property MemoBody body: card.body
    // The heading that stays at the top says the same by now.
    readonly property bool isHeadingCovered: heading && ListView.view && ListView.view.contentY > ListView.view.originY + 50 && y - ListView.view.contentY <= 30
    signal menuAsked(Item from)
    signal chosen()
    height: card.implicitHeight + card.y
    Row {
        id: head
        visible: row.heading
        opacity: row.isHeadingCovered ? 0 : 1
        x: (parent.width - row.column) / 2 + 2
        y: 16
        spacing: 8
        Text { id: headText; text: row.heading; color: Theme.text; font { family: Theme.serif; pixelSize: 15; bold: true } Accessible.role: Accessible.Heading; Accessible.name: text + " " + row.headingNote }
        Text { anchors.baseline: headText.baseline; text: row.headingNote; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
    }
    MemoCard {
        id: card
        y: head.visible ? 44 : 12
        width: row.column
        anchors.horizontalCenter: parent.horizontalCenter
        narrow: row.narrow
        memo: row.memo
        expanded: row.expanded
        seriesNumber: row.screens.settings.showsSeriesNumber ? row.screens.timeline.seriesNumber(row.index, row.screens.settings.seriesNumberAscending) : 0
        screens: row.screens
        current: row.hasKeys && row.ListView.isCurrentItem
        onMenuAsked: from => row.menuAsked(from)
        onPressed: row.chosen()
    }
}
