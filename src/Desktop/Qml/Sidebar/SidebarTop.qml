import QtQuick
import Nomely

// What stands above the tags: the month, the lists, the filters.
FocusScope {
    id: upper
    required property DesktopScreens screens
    property bool isTimeline: true
    readonly property SidebarScreen sidebar: screens.sidebar
    readonly property TimelineScreen timeline: screens.timeline
    signal chosen()
    implicitHeight: column.height + 12

    component ListRow: SidebarRow {
        required property int list
        width: column.width
        isCurrent: upper.isTimeline && upper.timeline.list === list
    }
    component Filter: IconButton {
        required property int list
        width: 40
        glyphSize: 17
        checked: upper.isTimeline && upper.timeline.list === list
    }
    Column {
        id: column
        y: 12
        width: parent.width
        MonthHeat { width: parent.width; sidebar: upper.sidebar; onChosen: upper.chosen() }
        Item { width: 1; height: 6 }
        ListRow { id: allRow; objectName: "listAll"; list: TimelineScreen.All; glyph: "all"; text: qsTr("全部笔记"); memos: upper.sidebar.allCount; KeyNavigation.down: todayRow; onClicked: { upper.timeline.showAll(); upper.arrive() } }
        ListRow { id: todayRow; objectName: "listToday"; list: TimelineScreen.Today; glyph: "today"; text: qsTr("今天"); memos: upper.sidebar.todayCount; KeyNavigation.down: pinnedRow; onClicked: { upper.timeline.showToday(); upper.arrive() } }
        ListRow { id: pinnedRow; objectName: "listPinned"; list: TimelineScreen.Pinned; glyph: "pin"; text: qsTr("置顶"); memos: upper.sidebar.pinnedCount; KeyNavigation.down: onThisDayRow.visible ? onThisDayRow : images; onClicked: { upper.timeline.showPinned(); upper.arrive() } }
        ListRow { id: onThisDayRow; objectName: "listOnThisDay"; list: TimelineScreen.OnThisDay; visible: upper.sidebar.hasOnThisDay; glyph: "history"; text: qsTr("那年今日"); memos: upper.sidebar.onThisDayCount; KeyNavigation.down: images; onClicked: { upper.timeline.showOnThisDay(); upper.arrive() } }
        Item { width: 1; height: 7 }
        Row {
            x: 6
            spacing: (column.width - 12 - 5 * 40) / 4
            Accessible.role: Accessible.ToolBar
            Accessible.name: qsTr("筛选")
            Filter { id: images; objectName: "filterImages"; list: TimelineScreen.Images; glyph: "image"; hint: qsTr("有图片"); KeyNavigation.right: links; onClicked: { upper.timeline.showImages(); upper.arrive() } }
            Filter { id: links; objectName: "filterLinks"; list: TimelineScreen.Links; glyph: "link"; hint: qsTr("有链接"); KeyNavigation.right: audio; onClicked: { upper.timeline.showLinks(); upper.arrive() } }
            Filter { id: audio; objectName: "filterAudio"; list: TimelineScreen.Audio; glyph: "mic"; hint: qsTr("有录音"); KeyNavigation.right: files; onClicked: { upper.timeline.showAudio(); upper.arrive() } }
            Filter { id: files; objectName: "filterFiles"; list: TimelineScreen.Attachments; glyph: "clip"; hint: qsTr("有附件"); KeyNavigation.right: untagged; onClicked: { upper.timeline.showAttachments(); upper.arrive() } }
            Filter { id: untagged; objectName: "filterUntagged"; list: TimelineScreen.Untagged; glyph: "untag"; hint: qsTr("无标签"); onClicked: { upper.timeline.showUntagged(); upper.arrive() } }
        }
    }

    function arrive() {
        screens.navigation.show(Navigation.Timeline)
        chosen()
    }
    function takeFocus() { allRow.forceActiveFocus(Qt.TabFocusReason) }
}
