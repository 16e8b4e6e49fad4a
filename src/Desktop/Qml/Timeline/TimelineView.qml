import QtQuick
import QtQuick.Controls.Basic
import Nomely

// The cards, and the heading of the day in view above them.
FocusScope {
    id: view
    required property DesktopScreens screens
    property bool narrow: false
    signal searchAsked()
    readonly property real column: Math.min(Theme.column, width - (narrow ? 24 : 48))
    // Keys without a modifier are for the cards alone, not for what is inside of one.
    readonly property bool hasKeys: list.activeFocus && (Window.activeFocusItem === list || Window.activeFocusItem === list.currentItem)

    ListView {
        id: list
        objectName: "timeline"
        anchors.fill: parent
        focus: true
        model: view.screens.timeline.model
        clip: true
        reuseItems: true
        cacheBuffer: 600
        boundsBehavior: Flickable.StopAtBounds
        flickDeceleration: 6000
        highlightFollowsCurrentItem: false
        currentIndex: -1
        activeFocusOnTab: true
        Accessible.role: Accessible.List
        Accessible.name: view.screens.timeline.title
        ScrollBar.vertical: FlatScrollBar {}
        footer: Item { width: 1; height: 72 }
        readonly property int topRow: indexAt(width / 2, contentY + 50)
        onTopRowChanged: view.screens.timeline.lookAt(topRow)
        onAtYEndChanged: if (atYEnd && count > 0) view.screens.timeline.loadMore()
        onCurrentIndexChanged: if (currentIndex >= 0) positionViewAtIndex(currentIndex, ListView.Contain)
        // Not for what is inside of a card: a current card would take the focus from it.
        onActiveFocusChanged: if (Window.activeFocusItem === list && currentIndex < 0 && count > 0) currentIndex = Math.max(0, topRow)
        delegate: TimelineRow {
            screens: view.screens
            narrow: view.narrow
            column: view.column
            width: list.width
            hasKeys: list.activeFocus
            onMenuAsked: from => view.openMenu(memo, from)
            onChosen: {
                list.currentIndex = index
                list.currentItem?.forceActiveFocus(Qt.MouseFocusReason)
            }
        }
    }
    StickyHeading {
        width: parent.width
        column: view.column
        visible: list.contentY > list.originY + 50 && text
        text: view.screens.timeline.sectionInView
        note: view.screens.timeline.sectionNoteInView
    }
    TimelineEmpty { anchors.centerIn: parent; visible: view.screens.timeline.isEmpty; screens: view.screens }
    LazyPopup { id: menu; sourceComponent: CardMenu { screens: view.screens; onDateAsked: { view.screens.timeline.beginMoving(memo); days.open() } } }
    LazyPopup { id: days; sourceComponent: DatePicker { parent: view; x: (view.width - width) / 2; y: 60; month: view.screens.timeline.moveMonth } }
    TimelineKeys { list: list; screens: view.screens; active: view.hasKeys; onSearchAsked: view.searchAsked(); onMenuAsked: view.openMenu(view.screens.timeline.model.at(list.currentIndex), list.currentItem) }
    Connections {
        target: view.screens.timeline
        function onRevealed(row) {
            list.positionViewAtIndex(row, ListView.Beginning)
            list.currentIndex = row
        }
        function onFollowed(row) { row === 0 ? list.positionViewAtBeginning() : list.positionViewAtIndex(row, ListView.Contain) }
        function onListChanged() {
            list.currentIndex = -1
            list.positionViewAtBeginning()
        }
    }

    function openMenu(memo, from) {
        menu.made().memo = memo
        menu.item.popup(from, from.width - menu.item.width, Math.min(from.height, 40))
    }
    function takeFocus() { list.forceActiveFocus(Qt.TabFocusReason) }
}
