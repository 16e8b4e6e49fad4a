import QtQuick
import QtQuick.Controls.Basic
import Nomely

// A note's earlier versions: what changed, and the way back. Beside the page as a panel, or in its
// place where there is no room; side by side where there is much.
FocusScope {
    id: panel
    objectName: "historyPanel"
    required property DesktopScreens screens
    readonly property HistoryScreen history: screens.history
    readonly property bool wide: width >= 640
    readonly property bool isEmpty: list.count === 0
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("历史版本")
    Rectangle {
        anchors.fill: parent
        color: Theme.sidebar
        Rectangle { width: 1; height: parent.height; color: Theme.line }
        MouseArea { anchors.fill: parent; hoverEnabled: true; onWheel: wheel => wheel.accepted = true }
    }
    Item {
        id: bar
        width: parent.width
        height: 52
        Icon { id: mark; x: 20; anchors.verticalCenter: parent.verticalCenter; name: "history"; size: 18; tint: Theme.accent }
        Text { id: heading; anchors { left: mark.right; leftMargin: 10; verticalCenter: parent.verticalCenter } text: qsTr("历史版本"); color: Theme.text; font { family: Theme.sans; pixelSize: 15; bold: true } }
        Text { anchors { left: heading.right; leftMargin: 10; right: tools.left; baseline: heading.baseline } elide: Text.ElideRight; text: panel.history.title; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
        Row {
            id: tools
            anchors { right: parent.right; rightMargin: 12; verticalCenter: parent.verticalCenter }
            IconButton { objectName: "historyClear"; visible: !panel.isEmpty; glyph: "trash"; glyphSize: 16; hint: qsTr("清空所有版本历史"); onClicked: panel.history.clear() }
            IconButton { objectName: "historyClose"; glyph: "close"; glyphSize: 16; hint: qsTr("关闭") + "  Esc"; onClicked: panel.screens.navigation.showPanel(Navigation.NoPanel) }
        }
    }
    ListView {
        id: list
        objectName: "historyList"
        x: 12
        anchors.top: bar.bottom
        width: panel.wide ? 260 : panel.width - 24
        height: panel.wide ? panel.height - bar.height - 12 : Math.min(contentHeight, 34 * 6 + 17)
        model: panel.history.model
        clip: true
        focus: true
        activeFocusOnTab: true
        boundsBehavior: Flickable.StopAtBounds
        currentIndex: panel.history.chosen
        highlightMoveDuration: 0
        ScrollBar.vertical: FlatScrollBar {}
        Accessible.role: Accessible.List
        Accessible.name: qsTr("历史版本")
        Keys.onUpPressed: panel.history.choose(panel.history.chosen - 1)
        Keys.onDownPressed: panel.history.choose(panel.history.chosen + 1)
        Keys.onReturnPressed: panel.history.restore()
        delegate: HistoryRow {
            required property int index
            objectName: "historyRow"
            width: list.width
            chosen: panel.history.chosen === index
            onClicked: { list.forceActiveFocus(); panel.history.choose(index) }
        }
    }
    FocusRing { anchors.fill: list; target: list; visible: list.activeFocus; radius: 10 }
    Rectangle {
        id: box
        visible: !panel.isEmpty
        anchors { top: panel.wide ? bar.bottom : list.bottom; topMargin: panel.wide ? 0 : 12; left: panel.wide ? list.right : parent.left; right: parent.right; bottom: foot.top; leftMargin: 12; rightMargin: 12; bottomMargin: 12 }
        radius: Theme.radius
        color: Theme.card
        border { width: 1; color: Theme.line }
        ChangesView { anchors { fill: parent; margins: 1 } history: panel.history }
    }
    Item {
        id: foot
        visible: !panel.isEmpty
        anchors { left: box.left; right: box.right; bottom: parent.bottom; bottomMargin: 14 }
        height: 32
        Chip {
            objectName: "compareNext"
            visible: panel.history.isVersionChosen
            anchors.verticalCenter: parent.verticalCenter
            checkable: true
            checked: panel.history.comparesWithNext
            tint: checked ? Theme.accent : Theme.lineStrong
            text: checked ? qsTr("与下一版比较") : qsTr("与现在比较")
            onToggled: panel.history.comparesWithNext = checked
        }
        PushButton {
            objectName: "historyRestore"
            visible: panel.history.isVersionChosen
            anchors.right: parent.right
            text: qsTr("恢复这一版")
            primary: true
            enabled: !panel.history.isRestoring
            onClicked: panel.history.restore()
        }
    }
    EmptyState {
        objectName: "historyEmptyState"
        visible: panel.isEmpty && !panel.history.isLoading
        anchors.centerIn: parent
        glyph: "history"
        text: qsTr("还没有历史版本")
        note: qsTr("每次改动之前的样子会留在这里，最多 20 版。")
        actionText: qsTr("回到笔记")
        onTriggered: panel.screens.navigation.showPanel(Navigation.NoPanel)
    }
    AskingDialog {
        question: panel.history.question
        onAccepted: panel.history.accept()
        onDismissed: panel.history.dismiss()
    }
}
