import QtQuick
import Nomely

// A box of a kind of its own: a note, a tip, something important, a warning, a caution.
Rectangle {
    id: box
    required property bodySegment segment
    required property BodySelection selection
    property string keyword
    signal opened(string address)
    readonly property color ink: ({ note: Theme.link, tip: Theme.good, important: Theme.accent, warning: Theme.warn, caution: Theme.bad })[segment.calloutKind] ?? Theme.text
    implicitHeight: lines.implicitHeight + 24
    radius: 8
    color: ({ note: Theme.linkSoft, tip: Theme.goodSoft, important: Theme.accentSoft, warning: Theme.warnSoft, caution: Theme.badSoft })[segment.calloutKind] ?? Theme.sunken
    // Before its text: what comes last is completed first, and a text completed later clears it.
    BodyDocument {
        id: filling
        document: text.textDocument
        segment: box.segment
        look: CardLook
        keyword: box.keyword
    }
    Column {
        id: lines
        x: 14
        y: 12
        width: parent.width - 28
        spacing: 4
        BodyText {
            visible: box.segment.title
            width: parent.width
            selection: box.selection
            textFormat: TextEdit.PlainText
            text: box.segment.title
            says: box.segment.title
            color: box.ink
            font { family: Theme.sans; pixelSize: Theme.body; bold: true }
        }
        BodyText {
            id: text
            visible: length > 0
            width: parent.width
            selection: box.selection
            says: filling.plainText
            onOpened: address => box.opened(address)
        }
    }
}
