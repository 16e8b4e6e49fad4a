import QtQuick
import Nomely

// Keys that hold wherever the keyboard is.
Item {
    id: keys
    required property DesktopScreens screens
    readonly property Navigation navigation: screens.navigation
    readonly property bool onTimeline: navigation.page === Navigation.Timeline
    signal inputAsked()
    signal searchAsked()
    signal floatingSearchAsked()
    signal sidebarAsked()
    signal regionAsked()
    signal helpAsked()
    Shortcut { sequence: "Ctrl+N"; onActivated: { keys.navigation.show(Navigation.Timeline); keys.inputAsked() } }
    Shortcut { sequence: "Ctrl+F"; onActivated: keys.searchAsked() }
    Shortcut { sequence: "Ctrl+P"; onActivated: keys.floatingSearchAsked() }
    Shortcut { sequence: "Ctrl+1"; onActivated: keys.screens.timeline.showAll() }
    Shortcut { sequence: "Ctrl+2"; onActivated: keys.screens.timeline.showToday() }
    Shortcut { sequence: "Ctrl+3"; onActivated: keys.screens.timeline.showPinned() }
    Shortcut { sequence: "Ctrl+4"; onActivated: keys.screens.timeline.showOnThisDay() }
    Shortcut { sequence: "Alt+Left"; enabled: keys.onTimeline; onActivated: keys.screens.timeline.stepDay(-1) }
    Shortcut { sequence: "Alt+Right"; enabled: keys.onTimeline; onActivated: keys.screens.timeline.stepDay(1) }
    Shortcut { sequence: "Ctrl+\\"; onActivated: keys.sidebarAsked() }
    Shortcut { sequence: "Ctrl+Z"; enabled: keys.onTimeline; onActivated: keys.screens.tags.canUndo ? keys.screens.tags.undo() : keys.screens.timeline.undoDelete() }
    Shortcut { sequence: "Ctrl+,"; onActivated: keys.navigation.show(Navigation.Settings) }
    Shortcut { sequence: "F1"; onActivated: keys.helpAsked() }
    Shortcut { sequence: "F6"; onActivated: keys.regionAsked() }
    Shortcut { sequence: "Esc"; enabled: !keys.onTimeline && keys.navigation.page !== Navigation.Editor || keys.navigation.panel !== Navigation.NoPanel; onActivated: keys.navigation.back() }
}
