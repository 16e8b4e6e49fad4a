import QtQuick
import Nomely

// Paragraphs, headings, items and quotes that stand below each other.
Item {
    id: run
    required property bodySegment segment
    required property BodySelection selection
    property string keyword
    signal ticked(int line)
    signal opened(string address)
    implicitHeight: text.implicitHeight

    // Before its text: what comes last is completed first, and a text completed later clears it.
    BodyDocument {
        id: filling
        document: text.textDocument
        segment: run.segment
        look: CardLook
        keyword: run.keyword
    }
    BodyText {
        id: text
        width: run.width
        selection: run.selection
        says: filling.plainText
        onOpened: address => run.opened(address)
    }
    Repeater {
        model: filling.marks
        Item {
            id: mark
            required property int kind
            required property real markTop
            required property real extent
            required property bool checked
            required property int sourceLine
            required property string label
            required property bool mirrored
            required property real strokeLeft
            required property real strokeWidth
            x: mirrored ? run.width - width : 0
            y: markTop
            width: kind === BodyMarks.Bar ? 3 : 16
            height: extent
            Rectangle { visible: mark.kind === BodyMarks.Bar; anchors.fill: parent; color: Theme.lineStrong }
            Rectangle { visible: mark.kind === BodyMarks.Stroke; x: Math.round(mark.strokeLeft) - mark.x; width: Math.round(mark.strokeWidth); height: 1; color: CardLook.doneText }
            TickBox {
                objectName: "box" + mark.sourceLine
                visible: mark.kind === BodyMarks.Box
                anchors.verticalCenter: parent.verticalCenter
                checked: mark.checked
                label: mark.label
                onClicked: run.ticked(mark.sourceLine)
            }
        }
    }
}
