import QtQuick
import Nomely

// What stands in place of an empty list.
EmptyState {
    required property DesktopScreens screens
    readonly property emptyText words: screens.timeline.emptyText
    signal inputAsked()
    glyph: words.glyph
    text: words.text
    note: words.note
    actionText: words.actionText
    onTriggered: words.leadsToAll ? screens.timeline.showAll() : inputAsked()
}
