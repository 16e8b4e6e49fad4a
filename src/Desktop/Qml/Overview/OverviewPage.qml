import QtQuick
import QtQuick.Controls.Basic
import Nomely

// A month on one page.
PageFrame {
    id: page
    required property DesktopScreens screens
    readonly property OverviewScreen overview: screens.overview
    objectName: "overviewPage"
    columnWidth: 800
    title: overview.title
    note: qsTr("月度总览")
    onBackAsked: screens.navigation.back()
    actions: [
        PushButton { objectName: "thisMonth"; visible: !page.overview.isThisMonth; anchors.verticalCenter: parent.verticalCenter; text: qsTr("本月"); onClicked: page.overview.showThisMonth() },
        IconButton { objectName: "overviewPrevious"; anchors.verticalCenter: parent.verticalCenter; glyph: "left"; hint: qsTr("上个月") + "  PageUp"; onClicked: page.overview.step(-1) },
        IconButton { objectName: "overviewNext"; anchors.verticalCenter: parent.verticalCenter; glyph: "right"; hint: qsTr("下个月") + "  PageDown"; onClicked: page.overview.step(1) }
    ]
    Keys.onPressed: event => {
        event.accepted = event.key === Qt.Key_PageUp || event.key === Qt.Key_PageDown
        if (event.accepted) overview.step(event.key === Qt.Key_PageUp ? -1 : 1)
    }

    ListView {
        id: list
        objectName: "threads"
        anchors.fill: parent
        visible: page.overview.isReady && !page.overview.isEmpty
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        flickDeceleration: 6000
        activeFocusOnTab: count > 0
        currentIndex: -1
        highlightFollowsCurrentItem: false
        model: page.overview.threads
        ScrollBar.vertical: FlatScrollBar { parent: page; x: page.width - width; y: list.parent.y; height: list.height }
        Accessible.role: Accessible.List
        Accessible.name: qsTr("线索")
        onActiveFocusChanged: if (activeFocus && currentIndex < 0) currentIndex = 0
        onCurrentIndexChanged: if (activeFocus && currentIndex >= 0) positionViewAtIndex(currentIndex, ListView.Contain)
        Keys.onReturnPressed: if (currentItem) (currentItem as ThreadRow).act()
        Keys.onEnterPressed: if (currentItem) (currentItem as ThreadRow).act()
        Keys.onSpacePressed: if (currentItem) (currentItem as ThreadRow).act()
        header: OverviewHead { width: list.width; overview: page.overview; narrow: page.narrow }
        delegate: ThreadRow {
            width: list.width
            narrow: page.narrow
            dayCount: page.overview.dayCount
            isMarked: list.activeFocus && ListView.isCurrentItem
            onToggled: list.model.toggle(index)
            onOpened: page.overview.openEntry(index)
        }
        footer: OverviewAnomalies { width: list.width; overview: page.overview; narrow: page.narrow }
    }
    EmptyState {
        objectName: "overviewEmpty"
        anchors.centerIn: parent
        visible: page.overview.isEmpty
        glyph: "chart"
        text: page.overview.isThisMonth ? qsTr("这个月还没有笔记") : qsTr("%1没有笔记").arg(page.overview.title)
        actionText: page.overview.isThisMonth ? qsTr("去写一条") : qsTr("看本月")
        onTriggered: page.overview.isThisMonth ? page.screens.navigation.show(Navigation.Timeline) : page.overview.showThisMonth()
    }
}
