import QtQuick
import Nomely

// All that can be done with a memo.
ContextMenu {
    id: menu
    required property DesktopScreens screens
    property memoHandle memo
    MenuRow { objectName: "menuPin"; glyph: "pin"; text: menu.memo.pinned ? qsTr("取消置顶") : qsTr("置顶"); keyHint: "P"; onTriggered: menu.screens.timeline.togglePinned(menu.memo) }
    MenuRow { objectName: "menuLock"; glyph: "lock"; text: menu.memo.lockedOnTop ? qsTr("取消固定") : qsTr("固定在最上面"); keyHint: "Shift+P"; onTriggered: menu.screens.timeline.toggleLocked(menu.memo) }
    MenuRow { objectName: "menuDay"; glyph: "calendar"; text: qsTr("看这一天"); onTriggered: menu.screens.timeline.reveal(menu.memo.date, menu.memo.seqNumber) }
    MenuRow { objectName: "menuHistory"; glyph: "history"; text: qsTr("历史版本"); onTriggered: menu.screens.history.open(menu.memo) }
    MenuLine {}
    MenuRow { objectName: "menuDelete"; glyph: "trash"; text: qsTr("删除"); keyHint: "Delete"; destructive: true; onTriggered: menu.screens.timeline.remove(menu.memo) }
}
