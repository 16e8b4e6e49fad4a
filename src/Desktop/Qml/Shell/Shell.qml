import QtQuick
import QtQuick.Controls.Basic
import Nomely

// The window's contents for one data root.
FocusScope {
    id: shell
    required property DesktopApplication desktop
    required property DesktopScreens screens
    readonly property Navigation navigation: screens.navigation
    readonly property bool narrow: width < 720
    // Beside the page where there is room, else over it.
    readonly property bool hasPanel: navigation.panel === Navigation.History
    readonly property bool isPanelBeside: width >= 1180
    readonly property int pageMargin: hasPanel && isPanelBeside ? panel.width : 0
    readonly property bool hasSidebar: !narrow && !isSidebarHidden && navigation.page !== Navigation.Editor
    property bool isSidebarHidden: false
    focus: true

    Binding { target: Theme; property: "bodyFontSize"; value: shell.screens.settings.bodyFontSize }
    Binding { target: Theme; property: "tagFontSize"; value: shell.screens.settings.tagFontSize }
    Binding { target: Theme; property: "dark"; value: shell.screens.settings.look === SettingsScreen.FollowDesktop ? shell.desktop.theme.dark : shell.screens.settings.look === SettingsScreen.Dark }

    Sidebar {
        id: side
        visible: shell.hasSidebar
        width: shell.hasSidebar ? implicitWidth : 0
        height: parent.height
        screens: shell.screens
    }
    FocusScope {
        id: pages
        anchors { left: side.right; right: parent.right; top: parent.top; bottom: parent.bottom; rightMargin: shell.pageMargin }
        focus: true
        component Page: Loader {
            required property int page
            anchors.fill: parent
            active: shell.navigation.page === page
            onLoaded: (item as Item).forceActiveFocus()
        }
        TimelinePage {
            id: timeline
            anchors.fill: parent
            visible: shell.navigation.page === Navigation.Timeline
            enabled: visible
            focus: visible
            screens: shell.screens
            narrow: shell.narrow
            topInset: errors.implicitHeight
            onSidebarAsked: drawer.open()
            onSearchAsked: floating.open()
        }
        Page { page: Navigation.Editor; sourceComponent: FocusEditor { objectName: "focusEditor"; screen: shell.screens.focusEditor; narrow: shell.narrow; onHistoryAsked: shell.screens.history.open(screen.memo) } }
        Page { page: Navigation.Overview; sourceComponent: OverviewPage { screens: shell.screens; topInset: errors.implicitHeight } }
        Page { page: Navigation.Trash; sourceComponent: TrashPage { screens: shell.screens; topInset: errors.implicitHeight } }
        Page { page: Navigation.Settings; sourceComponent: SettingsPage { screens: shell.screens; topInset: errors.implicitHeight } }
        ErrorBanner { id: errors; y: shell.narrow ? 52 : 68; width: parent.width; banner: shell.screens.banner }
        Toast { anchors { horizontalCenter: parent.horizontalCenter; bottom: parent.bottom; bottomMargin: 20 } banner: shell.screens.banner }
    }
    Loader {
        id: panel
        anchors { right: parent.right; top: parent.top; bottom: parent.bottom }
        width: shell.isPanelBeside ? 360 : parent.width
        active: shell.hasPanel
        sourceComponent: HistoryPanel { screens: shell.screens }
        onLoaded: (item as Item).forceActiveFocus()
    }
    ReaderSheet { screens: shell.screens }
    MediaLayer { screens: shell.screens }
    AskingDialog { question: shell.screens.settings.question; onAccepted: shell.screens.settings.accept(); onDismissed: shell.screens.settings.dismiss() }
    LazyPopup { id: keySheet; sourceComponent: KeySheet { objectName: "keySheet"; parent: keySheet.overlay } }
    LazyPopup { id: floating; sourceComponent: FloatingSearch { parent: floating.overlay; search: shell.screens.floatingSearch } }
    SidebarDrawer { id: drawer; screens: shell.screens; narrow: shell.narrow; height: shell.height }
    ShellKeys {
        screens: shell.screens
        onInputAsked: timeline.takeInput()
        onRegionAsked: shell.nextRegion()
        onHelpAsked: keySheet.open()
        onFloatingSearchAsked: floating.open()
        onSearchAsked: shell.narrow || !onTimeline ? floating.open() : timeline.takeSearch()
        onSidebarAsked: shell.narrow ? drawer.open() : shell.isSidebarHidden = !shell.isSidebarHidden
    }
    Connections {
        target: shell.desktop
        function onInputAsked() { timeline.takeInput() }
    }
    // The input, the cards, the sidebar.
    function nextRegion() {
        if (hasSidebar && timeline.lastRegion) side.takeFocus()
        else timeline.nextRegion()
    }
}
