import QtQuick
import Nomely

// The time and marks of a memo, and its actions while it is looked at.
Item {
    id: head
    required property memoHandle memo
    required property DesktopScreens screens
    property bool lively: false
    property int seriesNumber: 0
    property bool showsDate: memo.pinned || memo.lockedOnTop
    signal menuAsked(Item from)
    implicitHeight: 22
    Row {
        spacing: 8
        anchors.verticalCenter: parent.verticalCenter
        Icon { visible: head.memo.pinned; anchors.verticalCenter: parent.verticalCenter; name: head.memo.lockedOnTop ? "lock" : "pin"; size: 14; tint: Theme.accent }
        Text { visible: head.seriesNumber > 0; anchors.verticalCenter: parent.verticalCenter; text: head.seriesNumber; color: Theme.text2; font { family: Theme.serif; pixelSize: Theme.normal; bold: true } }
        Text { anchors.verticalCenter: parent.verticalCenter; text: (head.showsDate ? Qt.formatDate(head.memo.date, qsTr("M月d日")) + " " : "") + head.memo.time; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
        Text { visible: text; anchors.verticalCenter: parent.verticalCenter; text: head.memo.mood; font { family: Theme.emoji; pixelSize: 13 } }
        Text { visible: text; anchors.verticalCenter: parent.verticalCenter; text: head.memo.source; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
    }
    Row {
        anchors { right: parent.right; rightMargin: -6; verticalCenter: parent.verticalCenter }
        opacity: head.lively ? 1 : 0
        IconButton { objectName: "cardPin"; glyph: "pin"; hint: head.memo.pinned ? qsTr("取消置顶") : qsTr("置顶"); glyphSize: 16; implicitHeight: 28; implicitWidth: 28; focusPolicy: Qt.NoFocus; onClicked: head.screens.timeline.togglePinned(head.memo) }
        IconButton { id: more; objectName: "cardMore"; glyph: "more"; hint: qsTr("更多"); glyphSize: 16; implicitHeight: 28; implicitWidth: 28; focusPolicy: Qt.NoFocus; onClicked: head.menuAsked(more) }
    }
}
