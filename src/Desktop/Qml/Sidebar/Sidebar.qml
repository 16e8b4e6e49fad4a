import QtQuick
import QtQuick.Controls.Basic
import Nomely

// The month, the lists and the tags; below them the ways to the other pages.
FocusScope {
    id: side
    required property DesktopScreens screens
    readonly property SidebarScreen sidebar: screens.sidebar
    readonly property TimelineScreen timeline: screens.timeline
    readonly property bool isTimeline: screens.navigation.page === Navigation.Timeline
    // Something was chosen: a drawer closes.
    signal chosen()
    objectName: "sidebar"
    implicitWidth: 264
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("侧栏")

    Rectangle { anchors.fill: parent; color: Theme.sidebar }
    Rectangle { anchors.right: parent.right; width: 1; height: parent.height; color: Theme.line }

    ListView {
        id: tags
        objectName: "tagList"
        anchors { fill: parent; leftMargin: 12; rightMargin: 13; bottomMargin: foot.height }
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        flickDeceleration: 6000
        activeFocusOnTab: count > 0
        currentIndex: -1
        highlightFollowsCurrentItem: false
        keyNavigationEnabled: false
        model: side.sidebar.tags
        ScrollBar.vertical: FlatScrollBar { parent: side; x: side.width - width - 2; y: tags.y; height: tags.height }
        Accessible.role: Accessible.Tree
        Accessible.name: qsTr("标签")
        footer: Item { width: 1; height: 16 }
        header: SidebarTop {
            width: tags.width
            screens: side.screens
            isTimeline: side.isTimeline
            onChosen: side.chosen()
            // Its rows come and go; who looks at the month goes on seeing all of it.
            onHeightChanged: if (tags.isAtTop) Qt.callLater(tags.positionViewAtBeginning)
        }
        property bool isAtTop: true
        onMovementEnded: isAtTop = atYBeginning
        delegate: SidebarTagRow {
            width: tags.width
            isCurrent: side.isTimeline && side.timeline.list === TimelineScreen.Tag && side.timeline.tag === tag
            isMarked: tags.activeFocus && ListView.isCurrentItem
            onChosen: tags.open(index)
            onToggleAsked: tags.model.toggle(index)
            onMenuAsked: tags.openMenu(this)
        }
        onActiveFocusChanged: if (activeFocus && currentIndex < 0) currentIndex = model.next(-1, 1)
        onCurrentIndexChanged: if (activeFocus && currentIndex >= 0) { positionViewAtIndex(currentIndex, ListView.Contain); isAtTop = atYBeginning }
        Keys.onUpPressed: currentIndex = model.next(currentIndex, -1)
        Keys.onDownPressed: currentIndex = model.next(currentIndex, 1)
        Keys.onRightPressed: currentIndex = model.rightOf(currentIndex)
        Keys.onLeftPressed: currentIndex = model.leftOf(currentIndex)
        Keys.onSpacePressed: model.toggle(currentIndex)
        Keys.onReturnPressed: open(currentIndex)
        Keys.onEnterPressed: open(currentIndex)
        Keys.onMenuPressed: openMenu(currentItem)
        Keys.onPressed: event => {
            event.accepted = event.key === Qt.Key_F10 && event.modifiers === Qt.ShiftModifier
            if (event.accepted) openMenu(currentItem)
        }
        function open(row) {
            currentIndex = row
            if (side.sidebar.openRow(row)) side.chosen()
        }
        function openMenu(entry) {
            if (!entry || entry.isHeading) return
            currentIndex = entry.index
            menu.made().show(entry)
        }
    }
    LazyPopup { id: menu; sourceComponent: TagMenu { parent: side; screens: side.screens; onEmojiAsked: emojis.open() } }
    LazyPopup { id: emojis; sourceComponent: EmojiSheet { parent: emojis.overlay; sidebar: side.sidebar; tag: menu.item.tag; emoji: menu.item.emoji } }
    SidebarFoot {
        id: foot
        anchors { bottom: parent.bottom; left: parent.left; right: parent.right; rightMargin: 1 }
        navigation: side.screens.navigation
        onChosen: side.chosen()
    }
    TagSheet { screens: side.screens }

    function takeFocus() { (tags.headerItem as SidebarTop).takeFocus() }
}
