import QtQuick
import Nomely

// The timeline below the quick input.
FocusScope {
    id: page
    required property DesktopScreens screens
    property bool narrow: false
    property real topInset: 0
    // Whether the next region after this one lies outside of the page.
    readonly property bool lastRegion: cards.activeFocus
    signal sidebarAsked()
    signal searchAsked()
    TopBar {
        id: bar
        width: parent.width
        screens: page.screens
        narrow: page.narrow
        onSidebarAsked: page.sidebarAsked()
        onSearchAsked: page.searchAsked()
        onSearchLeft: cards.takeFocus()
    }
    QuickInput {
        id: input
        objectName: "quickInput"
        anchors { top: bar.bottom; topMargin: page.topInset; horizontalCenter: parent.horizontalCenter }
        width: Math.min(Theme.column, parent.width - (page.narrow ? 24 : 48))
        screen: page.screens.quickInput
        saveNote: page.screens.banner.saveNote
        unsaved: page.screens.banner.isUnsaved
        narrow: page.narrow
        room: page.height
        focus: true
        onLeaveAsked: cards.takeFocus()
    }
    FirstRunLine {
        id: firstRun
        anchors { top: input.bottom; horizontalCenter: parent.horizontalCenter }
        width: input.width
        settings: page.screens.settings
    }
    TimelineView {
        id: cards
        anchors { fill: parent; topMargin: input.y + input.height + firstRun.implicitHeight + 8 }
        screens: page.screens
        narrow: page.narrow
        onSearchAsked: page.screens.floatingSearch.isShown ? page.searchAsked() : page.takeSearch()
    }
    Connections {
        target: page.screens.timeline
        function onInputAsked() { page.takeInput() }
        function onFileAsked() { input.pickFiles() }
    }
    function takeInput() { input.forceActiveFocus(Qt.ShortcutFocusReason) }
    function takeSearch() { bar.takeSearch() }
    function nextRegion() { input.activeFocus ? cards.takeFocus() : takeInput() }
}
