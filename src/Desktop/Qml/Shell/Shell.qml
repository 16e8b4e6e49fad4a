import QtQuick
import QtQuick.Controls.Basic
import Nomely

// The window's contents for one data root.
Item {
    id: shell
    required property DesktopScreens screens
    readonly property bool narrow: width < 720
    readonly property Navigation navigation: screens.navigation
    Sidebar {
        id: side
        visible: !shell.narrow
        width: shell.narrow ? 0 : implicitWidth
        height: parent.height
        screens: shell.screens
    }
    Item {
        id: main
        anchors { left: side.right; right: parent.right; top: parent.top; bottom: parent.bottom }
        Item {
            anchors.fill: parent
            visible: shell.navigation.page === Navigation.Timeline
            TopBar { id: bar; width: parent.width; screens: shell.screens; narrow: shell.narrow; onSidebarAsked: drawer.open(); onSearchAsked: floating.open(); onSearchLeft: timeline.forceActiveFocus() }
            TimelineView { id: timeline; anchors { fill: parent; topMargin: bar.height } screens: shell.screens; narrow: shell.narrow }
        }
        Loader {
            anchors.fill: parent
            active: shell.navigation.page === Navigation.Overview
            sourceComponent: OverviewPage { screens: shell.screens }
        }
    }
    Drawer {
        id: drawer
        width: 280
        height: shell.height
        interactive: shell.narrow
        background: Rectangle { color: Theme.sidebar }
        Loader {
            anchors.fill: parent
            active: shell.narrow && drawer.visible
            sourceComponent: Sidebar { screens: shell.screens; onChosen: drawer.close() }
        }
    }
    FloatingSearch { id: floating; search: shell.screens.floatingSearch }
    Shortcut { sequence: "Ctrl+F"; onActivated: shell.narrow || shell.navigation.page !== Navigation.Timeline ? floating.open() : bar.takeSearch() }
    Shortcut { sequence: "Ctrl+P"; onActivated: floating.open() }
    Shortcut { sequence: "Ctrl+\\"; enabled: shell.narrow; onActivated: drawer.open() }
}
