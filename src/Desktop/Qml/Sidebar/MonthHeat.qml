import QtQuick
import Nomely

// A month; each day's shade tells how much was written.
FocusScope {
    id: grid
    required property SidebarScreen sidebar
    readonly property CalendarModel calendar: sidebar.calendar
    readonly property real cell: Math.floor(width / 7)
    signal chosen()
    implicitHeight: days.y + days.height
    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("月历")

    Text { id: title; objectName: "monthTitle"; x: 8; height: 30; verticalAlignment: Text.AlignVCenter; text: grid.calendar.title; color: Theme.text; font { family: Theme.serif; pixelSize: 15; bold: true } Accessible.role: Accessible.Heading; Accessible.name: text }
    Row {
        anchors { right: parent.right; rightMargin: 2; verticalCenter: title.verticalCenter }
        IconButton { objectName: "previousMonth"; glyph: "left"; glyphSize: 14; hint: qsTr("上个月"); implicitWidth: 26; implicitHeight: 26; onClicked: grid.calendar.moveMonths(-1) }
        IconButton { objectName: "nextMonth"; glyph: "right"; glyphSize: 14; hint: qsTr("下个月"); implicitWidth: 26; implicitHeight: 26; onClicked: grid.calendar.moveMonths(1) }
    }
    Row {
        y: 32
        Repeater {
            model: [qsTr("一"), qsTr("二"), qsTr("三"), qsTr("四"), qsTr("五"), qsTr("六"), qsTr("日")]
            Text { required property string modelData; width: grid.cell; height: 18; horizontalAlignment: Text.AlignHCenter; text: modelData; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.tiny } }
        }
    }
    GridView {
        id: days
        objectName: "days"
        y: 53
        width: grid.cell * 7
        height: 6 * cellHeight
        cellWidth: grid.cell
        cellHeight: 29
        interactive: false
        focus: true
        activeFocusOnTab: true
        keyNavigationEnabled: false
        model: grid.calendar
        currentIndex: grid.calendar.cursor
        Accessible.role: Accessible.Table
        Accessible.name: currentItem ? (currentItem as MonthCell).label : title.text
        Keys.onLeftPressed: grid.calendar.moveDays(-1)
        Keys.onRightPressed: grid.calendar.moveDays(1)
        Keys.onUpPressed: grid.calendar.moveDays(-7)
        Keys.onDownPressed: grid.calendar.moveDays(7)
        Keys.onReturnPressed: grid.openCursor()
        Keys.onEnterPressed: grid.openCursor()
        Keys.onSpacePressed: grid.openCursor()
        Keys.onPressed: event => {
            event.accepted = true
            if (event.key === Qt.Key_PageUp) grid.calendar.moveMonths(-1)
            else if (event.key === Qt.Key_PageDown) grid.calendar.moveMonths(1)
            else if (event.key === Qt.Key_Home) grid.calendar.goToToday()
            else event.accepted = false
        }
        delegate: MonthCell {
            width: days.cellWidth
            height: days.cellHeight
            isCursor: days.activeFocus && GridView.isCurrentItem
            onTriggered: { grid.sidebar.showCell(index); grid.chosen() }
        }
    }
    function openCursor() {
        sidebar.showCell(days.currentIndex)
        chosen()
    }
}
