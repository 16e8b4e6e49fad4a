import QtQuick
import Nomely

// What can be done with a tag.
ContextMenu {
    id: menu
    required property DesktopScreens screens
    property string tag
    property string emoji
    property string tagColor
    property bool isPinned: false
    readonly property SidebarScreen sidebar: screens.sidebar
    objectName: "tagMenu"
    signal emojiAsked()

    MenuRow { objectName: "tagPin"; glyph: "pin"; text: menu.isPinned ? qsTr("取消置顶") : qsTr("置顶标签"); onTriggered: menu.sidebar.togglePinned(menu.tag) }
    MenuRow { objectName: "tagEmoji"; glyph: "smile"; text: qsTr("表情…"); onTriggered: menu.emojiAsked() }
    TagColors { objectName: "tagColors"; chosen: menu.tagColor; onPicked: value => { menu.close(); menu.sidebar.setColor(menu.tag, value) } }
    MenuLine {}
    MenuRow { objectName: "tagRename"; glyph: "edit"; text: qsTr("改名…"); onTriggered: menu.screens.tags.open(TagsScreen.Rename, menu.tag) }
    MenuRow { objectName: "tagMerge"; glyph: "merge"; text: qsTr("并入另一个标签…"); onTriggered: menu.screens.tags.open(TagsScreen.Merge, menu.tag) }
    MenuLine {}
    MenuRow { objectName: "tagDelete"; glyph: "untag"; destructive: true; text: qsTr("删除标签…"); onTriggered: menu.screens.tags.open(TagsScreen.Delete, menu.tag) }
    MenuRow { objectName: "tagDeleteMemos"; glyph: "trash"; destructive: true; text: qsTr("删除标签和笔记…"); onTriggered: menu.screens.tags.open(TagsScreen.DeleteWithMemos, menu.tag) }

    function show(entry) {
        tag = entry.tag
        emoji = entry.emoji
        tagColor = entry.tagColor
        isPinned = entry.isPinned
        const place = entry.mapToItem(parent, 24, entry.height)
        popup(place.x, place.y)
    }
}
