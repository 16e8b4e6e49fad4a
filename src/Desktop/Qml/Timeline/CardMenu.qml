import QtQuick
import Nomely

// All that can be done with a memo.
ContextMenu {
    id: menu
    required property DesktopScreens screens
    property memoHandle memo
    signal dateAsked()
    MenuRow { objectName: "menuEdit"; glyph: "edit"; text: qsTr("编辑"); keyHint: "Enter"; onTriggered: menu.screens.focusEditor.open(menu.memo) }
    MenuRow { objectName: "menuPin"; glyph: "pin"; text: menu.memo.pinned ? qsTr("取消置顶") : qsTr("置顶"); keyHint: "P"; onTriggered: menu.screens.timeline.togglePinned(menu.memo) }
    MenuRow { objectName: "menuLock"; glyph: "lock"; text: menu.memo.lockedOnTop ? qsTr("取消固定") : qsTr("固定在最上面"); keyHint: "Shift+P"; onTriggered: menu.screens.timeline.toggleLocked(menu.memo) }
    MenuLine {}
    MenuRow { objectName: "menuMove"; glyph: "calendar"; text: qsTr("改日期…"); onTriggered: menu.dateAsked() }
    MenuRow { objectName: "menuDay"; glyph: "today"; text: qsTr("看这一天"); onTriggered: menu.screens.timeline.reveal(menu.memo.date, menu.memo.seqNumber) }
    MenuRow { objectName: "menuHistory"; glyph: "history"; text: qsTr("历史版本"); onTriggered: menu.screens.history.open(menu.memo) }
    MenuLine {}
    MenuRow { objectName: "menuCopyText"; glyph: "copy"; text: qsTr("复制文字"); onTriggered: menu.screens.cards.copyText(menu.memo) }
    MenuRow { objectName: "menuCopyMarkdown"; glyph: "hash"; text: qsTr("复制 Markdown"); keyHint: "Ctrl+C"; onTriggered: menu.screens.cards.copyMarkdown(menu.memo) }
    MenuRow { objectName: "menuCopyHtml"; glyph: "code"; text: qsTr("复制 HTML"); onTriggered: menu.screens.cards.copyHtml(menu.memo) }
    MenuLine {}
    MenuRow { objectName: "menuDelete"; glyph: "trash"; text: qsTr("删除"); keyHint: "Delete"; destructive: true; onTriggered: menu.screens.timeline.remove(menu.memo) }
}
