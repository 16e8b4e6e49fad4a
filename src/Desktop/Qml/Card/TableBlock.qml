import QtQuick
import Nomely

// A table; one that is wider than its place is moved sideways.
Item {
    id: box
    required property bodySegment segment
    required property BodySelection selection
    property string keyword
    signal opened(string address)
    implicitHeight: frame.height + (more.visible ? more.height + 4 : 0)
    // Before its text: what comes last is completed first, and a text completed later clears it.
    TableDocument {
        id: filling
        containerWidth: box.width
        document: text.textDocument
        segment: box.segment
        look: CardLook
        keyword: box.keyword
    }
    Rectangle {
        id: frame
        width: Math.min(filling.tableWidth + 2, box.width)
        height: text.implicitHeight + 2
        radius: 8
        color: "transparent"
        border { width: 1; color: Theme.line }
        SideScroll {
            id: area
            x: 1
            y: 1
            width: parent.width - 2
            height: text.implicitHeight
            contentWidth: filling.tableWidth
            Repeater {
                model: filling.marks
                Item {
                    id: row
                    required property int index
                    required property real markTop
                    required property real extent
                    y: markTop
                    width: filling.tableWidth
                    height: extent
                    Rectangle { visible: row.index === 0; anchors.fill: parent; radius: 7; color: Theme.sunken }
                    Rectangle { visible: row.index > 0; width: parent.width; height: 1; color: Theme.line }
                }
            }
            BodyText {
                id: text
                selection: box.selection
                says: filling.plainText
                width: filling.tableWidth
                onOpened: address => box.opened(address)
            }
        }
    }
    Text {
        id: more
        visible: filling.hiddenColumns > 0
        anchors { top: frame.bottom; topMargin: 4 }
        text: qsTr("还有 %1 列没有显示").arg(filling.hiddenColumns)
        color: Theme.text3
        font { family: Theme.sans; pixelSize: Theme.small }
    }
}
