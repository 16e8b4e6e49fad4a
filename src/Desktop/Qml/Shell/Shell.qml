import QtQuick
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
    focus: true

    Binding { target: Theme; property: "bodyFontSize"; value: shell.screens.settings.bodyFontSize }
    Binding { target: Theme; property: "tagFontSize"; value: shell.screens.settings.tagFontSize }
    Binding { target: Theme; property: "dark"; value: shell.screens.settings.look === SettingsScreen.FollowDesktop ? shell.desktop.theme.dark : shell.screens.settings.look === SettingsScreen.Dark }

    TimelinePage {
        id: timeline
        anchors { fill: parent; rightMargin: shell.pageMargin }
        visible: shell.navigation.page === Navigation.Timeline
        enabled: visible
        focus: visible
        screens: shell.screens
        narrow: shell.narrow
        topInset: errors.implicitHeight
    }
    Loader {
        anchors { fill: parent; rightMargin: shell.pageMargin }
        active: shell.navigation.page === Navigation.Editor
        sourceComponent: FocusEditor { objectName: "focusEditor"; screen: shell.screens.focusEditor; narrow: shell.narrow }
        onLoaded: item.forceActiveFocus()
    }
    Loader {
        anchors { fill: parent; rightMargin: shell.pageMargin }
        active: shell.navigation.page === Navigation.Trash
        sourceComponent: TrashPage { screens: shell.screens; topInset: errors.implicitHeight }
        onLoaded: item.forceActiveFocus()
    }
    Loader {
        anchors { fill: parent; rightMargin: shell.pageMargin }
        active: shell.navigation.page === Navigation.Settings
        sourceComponent: SettingsPage { screens: shell.screens; topInset: errors.implicitHeight }
        onLoaded: item.forceActiveFocus()
    }
    ErrorBanner { id: errors; y: shell.narrow ? 52 : 68; width: parent.width - shell.pageMargin; banner: shell.screens.banner }
    Loader {
        id: panel
        anchors { right: parent.right; top: parent.top; bottom: parent.bottom }
        width: shell.isPanelBeside ? 360 : parent.width
        active: shell.hasPanel
        sourceComponent: HistoryPanel { screens: shell.screens }
        onLoaded: item.forceActiveFocus()
    }
    ReaderSheet { screens: shell.screens }
    MediaLayer { screens: shell.screens }
    AskingDialog { question: shell.screens.settings.question; onAccepted: shell.screens.settings.accept(); onDismissed: shell.screens.settings.dismiss() }
    Toast { anchors { horizontalCenter: parent.horizontalCenter; bottom: parent.bottom; bottomMargin: 20 } banner: shell.screens.banner }
    KeySheet { id: keySheet; objectName: "keySheet" }
    ShellKeys {
        screens: shell.screens
        onInputAsked: timeline.takeInput()
        onRegionAsked: timeline.nextRegion()
        onHelpAsked: keySheet.open()
    }
    ReaderSheet { screens: shell.screens }
    Connections {
        target: shell.desktop
        function onInputAsked() { timeline.takeInput() }
    }
}
