import QtQuick
import Nomely

// A memo in the timeline.
Item {
    id: card
    objectName: "card"
    required property memoHandle memo
    required property DesktopScreens screens
    property bool expanded: false
    property int seriesNumber: 0
    property bool narrow: false
    property bool current: false
    readonly property MemoBody body: text
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
                CardHead { width: parent.width; memo: card.memo; screens: card.screens; seriesNumber: card.seriesNumber; lively: hover.hovered || card.current; onMenuAsked: from => card.menuAsked(from) }
                MemoBody {
                    id: text
                    width: parent.width
                    memo: card.memo
                    expanded: card.expanded
                    keyword: card.screens.timeline.query
                    linksAsCards: card.screens.settings.linksAsCards
                    onTapped: card.pressed()
                    onTicked: line => card.screens.cards.tick(card.memo, line)
                    onLinkActivated: address => card.screens.cards.openLink(address)
                    onExpandAsked: card.screens.timeline.toggleExpanded(card.memo)
                    onOpenLong: card.screens.cards.read(card.memo)
                }
                MemoAttachments { width: parent.width; memo: card.memo; screens: card.screens }
                CardTags { width: parent.width; memo: card.memo; screens: card.screens }
            }
        }
    }
}
