import QtQuick
import Nomely

// What keys do while a card has the focus.
Item {
    id: keys
    required property ListView list
    required property DesktopScreens screens
    property bool active: false
    signal menuAsked()
    // Back from what a search found to its results.
    signal searchAsked()
    readonly property bool onCard: active && list.currentItem !== null
    Shortcut { enabled: keys.active; sequences: ["J", "Down"]; onActivated: keys.list.incrementCurrentIndex() }
    Shortcut { enabled: keys.active; sequences: ["K", "Up"]; onActivated: keys.list.decrementCurrentIndex() }
    Shortcut { enabled: keys.active; sequence: "Home"; onActivated: keys.list.currentIndex = 0 }
    Shortcut { enabled: keys.active; sequence: "End"; onActivated: keys.list.currentIndex = keys.list.count - 1 }
    Shortcut { enabled: keys.active; sequence: "PgDown"; onActivated: keys.list.flick(0, -2600) }
    Shortcut { enabled: keys.active; sequence: "PgUp"; onActivated: keys.list.flick(0, 2600) }
    Shortcut { enabled: keys.onCard; sequences: ["Return", "Enter", "Ctrl+E"]; onActivated: keys.screens.focusEditor.open(keys.current()) }
    Shortcut { enabled: keys.onCard; sequence: "Space"; onActivated: keys.screens.timeline.toggleExpanded(keys.current()) }
    Shortcut { enabled: keys.onCard; sequence: "P"; onActivated: keys.screens.timeline.togglePinned(keys.current()) }
    Shortcut { enabled: keys.onCard; sequence: "Shift+P"; onActivated: keys.screens.timeline.toggleLocked(keys.current()) }
    Shortcut { enabled: keys.onCard; sequence: "Delete"; onActivated: keys.screens.timeline.remove(keys.current()) }
    Shortcut { enabled: keys.onCard; sequences: [StandardKey.Copy]; onActivated: (keys.list.currentItem as TimelineRow).body.copy() }
    Shortcut { enabled: keys.onCard; sequences: [StandardKey.SelectAll]; onActivated: (keys.list.currentItem as TimelineRow).body.selectAll() }
    Shortcut { enabled: keys.onCard; sequences: ["Menu", "Shift+F10"]; onActivated: keys.menuAsked() }
    Shortcut { enabled: keys.active && (keys.screens.search.isShown || keys.screens.floatingSearch.isShown); sequence: "Esc"; onActivated: keys.searchAsked() }

    // Read when a key is pressed: rows come and go under the same index.
    function current() { return screens.timeline.model.at(list.currentIndex) }
}
