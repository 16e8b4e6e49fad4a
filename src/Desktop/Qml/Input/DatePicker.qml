import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Nomely

// A month to pick a day from, by pointer or arrows.
Popup {
    id: picker
    objectName: "datePicker"
    required property MonthInView month
    width: 260
    padding: 12
    margins: 8
    focus: true
    background: Rectangle { radius: 10; color: Theme.raised; border { width: 1; color: Theme.line } }
    contentItem: FocusScope {
        id: page
        focus: true
        implicitHeight: column.implicitHeight
        Accessible.role: Accessible.Pane
        Accessible.name: qsTr("选择日期，%1%2日").arg(picker.month.title).arg(picker.month.day)
        Keys.onLeftPressed: picker.month.stepDays(-1)
        Keys.onRightPressed: picker.month.stepDays(1)
        Keys.onUpPressed: picker.month.stepDays(-7)
        Keys.onDownPressed: picker.month.stepDays(7)
        Keys.onReturnPressed: { picker.month.accept(); picker.close() }
        Keys.onPressed: event => {
            event.accepted = event.key === Qt.Key_PageUp || event.key === Qt.Key_PageDown
            if (event.accepted) picker.month.stepMonths(event.key === Qt.Key_PageUp ? -1 : 1)
        }
        ColumnLayout {
            id: column
            width: parent.width
            spacing: 6
            RowLayout {
                Text { Layout.fillWidth: true; Layout.leftMargin: 6; text: picker.month.title; color: Theme.text; font { family: Theme.serif; pixelSize: 15; bold: true } }
                IconButton { objectName: "monthBefore"; glyph: "left"; hint: qsTr("上个月"); glyphSize: 14; onClicked: picker.month.stepMonths(-1) }
                IconButton { objectName: "monthAfter"; glyph: "right"; hint: qsTr("下个月"); glyphSize: 14; onClicked: picker.month.stepMonths(1) }
            }
            DayOfWeekRow {
                Layout.fillWidth: true
                locale: Qt.locale("zh_CN") // qmllint disable type
                delegate: Text {
                    required property string narrowName
                    text: narrowName
                    color: Theme.text3
                    horizontalAlignment: Text.AlignHCenter
                    font { family: Theme.sans; pixelSize: Theme.tiny }
                }
            }
            MonthGrid {
                Layout.fillWidth: true
                Layout.preferredHeight: 6 * 32
                locale: Qt.locale("zh_CN") // qmllint disable type
                year: picker.month.year
                month: picker.month.month
                spacing: 2
                delegate: Rectangle {
                    id: cell
                    required property var model
                    readonly property bool inside: model.month === picker.month.month
                    readonly property bool chosen: inside && model.day === picker.month.day
                    objectName: inside ? "day" + model.day : ""
                    radius: 8
                    color: chosen ? Theme.accent : hover.hovered ? Theme.hover : "transparent"
                    border { width: model.today && !chosen ? 1 : 0; color: Theme.accent }
                    Accessible.role: Accessible.Cell
                    Accessible.name: model.day
                    Text {
                        anchors.centerIn: parent
                        text: cell.model.day
                        color: cell.chosen ? Theme.accentText : Theme.text
                        opacity: cell.inside ? 1 : 0.4
                        font { family: Theme.sans; pixelSize: Theme.normal }
                    }
                    HoverHandler { id: hover }
                    TapHandler { onTapped: { picker.month.pick(cell.model.year, cell.model.month, cell.model.day); picker.month.accept(); picker.close() } }
                }
            }
        }
    }
}
