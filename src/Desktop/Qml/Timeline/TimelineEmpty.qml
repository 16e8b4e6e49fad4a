import QtQuick
import Nomely

// What stands in place of the cards while there are none.
EmptyState {
    id: empty
    required property DesktopScreens screens
    readonly property emptyText content: screens.timeline.emptyText
    glyph: content.glyph
    text: content.text
    note: content.note
    actionText: content.actionText
    onTriggered: screens.timeline.followEmptyText()
}
