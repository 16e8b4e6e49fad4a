import QtQuick
import QtQuick.Controls.Basic
import Nomely

// A memo in the timeline.
FocusScope {
    id: card
    required property memoHandle memo
    required property DesktopScreens screens
    property bool expanded: false
    property bool narrow: false
    property bool current: false
    signal menuAsked(Item from)
    signal expandAsked(bool expanded)
    implicitHeight: frame.implicitHeight
    readonly property bool lively: hover.hovered || activeFocus

    Rectangle {
        id: frame
        width: parent.width
        implicitHeight: content.implicitHeight + 34
        height: implicitHeight
        radius: Theme.radius
        color: Theme.card
        border { width: card.current && card.activeFocus ? 2 : 1; color: card.current && card.activeFocus ? Theme.accent : card.lively ? Theme.lineStrong : Theme.line }
        HoverHandler { id: hover }
        Column {
            id: content
            x: card.narrow ? 16 : 20
            y: 16
            width: parent.width - 2 * x
            spacing: 8
            CardHead { width: parent.width; memo: card.memo; screens: card.screens; lively: card.lively; onMenuAsked: from => card.menuAsked(from) }
            Text { width: parent.width; text: card.memo.body; wrapMode: Text.Wrap; color: Theme.text; maximumLineCount: card.expanded ? 10000 : 6; elide: Text.ElideRight; font { family: Theme.sans; pixelSize: Theme.body } }
            MemoAttachments { width: parent.width; memo: card.memo; screens: card.screens }
            CardTags { width: parent.width; memo: card.memo; screens: card.screens }
        }
    }
}
