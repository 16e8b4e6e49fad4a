import QtQuick
import QtQuick.Controls.Basic
import Nomely

// What was deleted: brought back, or destroyed for good.
PageFrame {
    id: page
    objectName: "trashPage"
    required property DesktopScreens screens
    readonly property TrashScreen trash: screens.trash
    readonly property TrashModel notes: trash.model
    title: qsTr("回收站")
    note: notes.count > 0 ? qsTr("%1 条").arg(notes.count) : ""
    onBackAsked: screens.navigation.back()
    Component.onCompleted: trash.open()
    actions: [
        PushButton { objectName: "trashRange"; visible: page.notes.count > 0 && !page.narrow; text: qsTr("按日期范围删除"); onClicked: range.open() },
        IconButton { objectName: "trashRangeNarrow"; visible: page.notes.count > 0 && page.narrow; glyph: "calendar"; hint: qsTr("按日期范围删除"); onClicked: range.open() },
        PushButton { objectName: "trashEmpty"; visible: page.notes.count > 0; text: qsTr("清空"); destructive: true; onClicked: page.trash.empty() }
    ]

    Item {
        id: bar
        width: parent.width
        height: visible ? 44 : 0
        visible: page.notes.count > 0
        CheckMark {
            id: all
            objectName: "trashAll"
            x: 12
            anchors.verticalCenter: parent.verticalCenter
            checked: page.notes.areAllChecked
            partly: page.notes.checkedCount > 0
            label: qsTr("全选")
            onClicked: page.notes.checkAll(!page.notes.areAllChecked)
            Keys.onReturnPressed: clicked()
        }
        Text {
            anchors { left: all.right; leftMargin: 10; verticalCenter: parent.verticalCenter }
            text: page.notes.checkedCount > 0 ? qsTr("已选 %1 条").arg(page.notes.checkedCount) : qsTr("全选")
            color: Theme.text2
            font { family: Theme.sans; pixelSize: Theme.normal }
        }
        Row {
            anchors { right: parent.right; verticalCenter: parent.verticalCenter }
            spacing: 8
            visible: page.notes.checkedCount > 0
            PushButton { objectName: "restoreChecked"; text: qsTr("恢复"); primary: true; enabled: !page.trash.isBusy; onClicked: page.trash.restoreChecked() }
            PushButton { objectName: "removeChecked"; text: qsTr("永久删除"); destructive: true; enabled: !page.trash.isBusy; onClicked: page.trash.removeChecked() }
        }
    }
    ListView {
        id: list
        objectName: "trashList"
        anchors { top: bar.bottom; bottom: parent.bottom; left: parent.left; right: parent.right }
        model: page.notes
        clip: true
        spacing: 10
        reuseItems: true
        activeFocusOnTab: true
        focus: true
        boundsBehavior: Flickable.StopAtBounds
        keyNavigationEnabled: true
        highlightMoveDuration: Theme.motion
        footer: Item { width: 1; height: 72 }
        ScrollBar.vertical: FlatScrollBar {}
        Accessible.role: Accessible.List
        Accessible.name: page.title
        property int expandedRow: -1
        delegate: TrashRow {
            required property int index
            objectName: "trashRow"
            width: list.width
            current: list.activeFocus && ListView.isCurrentItem
            expanded: list.expandedRow === index
            onToggled: isRange => { list.forceActiveFocus(); list.currentIndex = index; isRange ? page.notes.toggleTo(index) : page.notes.toggle(index) }
            onOpened: { list.forceActiveFocus(); list.currentIndex = index; list.expandedRow = list.expandedRow === index ? -1 : index }
            onRestoreAsked: page.trash.restore(index)
            onRemoveAsked: page.trash.remove(index)
        }
        Keys.onSpacePressed: event => event.modifiers & Qt.ShiftModifier ? page.notes.toggleTo(currentIndex) : page.notes.toggle(currentIndex)
        Keys.onReturnPressed: expandedRow = expandedRow === currentIndex ? -1 : currentIndex
        Keys.onDeletePressed: page.notes.checkedCount > 0 ? page.trash.removeChecked() : page.trash.remove(currentIndex)
        Keys.onPressed: event => {
            if (event.key === Qt.Key_R) page.notes.checkedCount > 0 ? page.trash.restoreChecked() : page.trash.restore(currentIndex)
            else if (event.key === Qt.Key_A && event.modifiers & Qt.ControlModifier) page.notes.checkAll(true)
            else return
            event.accepted = true
        }
        Connections {
            target: page.notes
            function onCountChanged() { list.expandedRow = -1 }
        }
    }
    EmptyState {
        objectName: "trashEmptyState"
        visible: page.notes.count === 0 && !page.trash.isLoading
        anchors.centerIn: parent
        glyph: "trash"
        text: qsTr("回收站是空的")
        note: qsTr("删除的笔记会留在这里，直到你清空它。")
        actionText: qsTr("回到笔记")
        onTriggered: page.screens.navigation.show(Navigation.Timeline)
    }
    RangeSheet { id: range; trash: page.trash }
    AskingDialog {
        question: page.trash.question
        onAccepted: page.trash.accept()
        onDismissed: page.trash.dismiss()
    }
    BackupProgress { trash: page.trash }
}
