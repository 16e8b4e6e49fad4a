import QtQuick
import Nomely

// A memo in the timeline.
Item {
    id: card
    objectName: "card"
    required property memoHandle memo
    required property DesktopScreens screens
    property bool expanded: false
    property bool narrow: false
    property bool current: false
    // Whether the keyboard is at something inside of the card.
    readonly property bool hasInnerFocus: inner.activeFocus
    signal menuAsked(Item from)
    signal pressed()
    implicitHeight: frame.implicitHeight
    Accessible.role: Accessible.ListItem
    Accessible.name: Qt.formatDate(memo.date, "M月d日") + " " + memo.time + "，" + memo.body
    Accessible.focusable: true
    Accessible.focused: current

    Rectangle {
        id: frame
        width: parent.width
        implicitHeight: inner.implicitHeight + 34
        height: implicitHeight
        radius: Theme.radius
        color: Theme.card
        border { width: card.current ? 2 : 1; color: card.current ? Theme.accent : hover.hovered ? Theme.lineStrong : Theme.line }
        HoverHandler { id: hover }
        TapHandler { onTapped: card.pressed() }
        TapHandler { acceptedButtons: Qt.RightButton; onTapped: { card.pressed(); card.menuAsked(frame) } }
        FocusScope {
            id: inner
            x: card.narrow ? 16 : 20
            y: 16
            width: parent.width - 2 * x
            implicitHeight: content.implicitHeight
            Column {
                id: content
                width: parent.width
                spacing: 8
                CardHead { width: parent.width; memo: card.memo; screens: card.screens; lively: hover.hovered || card.current; onMenuAsked: from => card.menuAsked(from) }
                Text { width: parent.width; text: card.memo.body; wrapMode: Text.Wrap; color: Theme.text; maximumLineCount: card.expanded ? 10000 : 6; elide: Text.ElideRight; font { family: Theme.sans; pixelSize: Theme.body } }
                MemoAttachments { width: parent.width; memo: card.memo; screens: card.screens }
                CardTags { width: parent.width; memo: card.memo; screens: card.screens }
            }
        }
    }
}
