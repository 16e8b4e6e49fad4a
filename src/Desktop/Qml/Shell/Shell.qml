import QtQuick
import Nomely

// The window's contents for one data root.
Item {
    id: shell
    required property DesktopScreens screens
    readonly property bool narrow: width < 720
    readonly property int page: screens.navigation.page
    readonly property bool hasPanel: screens.navigation.panel === Navigation.History
    // Beside the page where there is room, else over it.
    readonly property bool panelBeside: width >= 1180
    readonly property int panelWidth: panelBeside ? 360 : width
    Binding { target: Theme; property: "bodyFontSize"; value: shell.screens.settings.bodyFontSize }
    Binding { target: Theme; property: "tagFontSize"; value: shell.screens.settings.tagFontSize }
    Binding { target: Theme; property: "dark"; value: shell.screens.settings.look === SettingsScreen.Dark; when: shell.screens.settings.look !== SettingsScreen.FollowDesktop }
    Item {
        id: main
        anchors { fill: parent; rightMargin: shell.hasPanel && shell.panelBeside ? shell.panelWidth : 0 }
        TopBar { id: bar; width: parent.width; screens: shell.screens; narrow: shell.narrow }
        FirstRunLine { id: firstRun; y: bar.height + errors.implicitHeight; width: Math.min(Theme.column, parent.width - 24); anchors.horizontalCenter: parent.horizontalCenter; settings: shell.screens.settings }
        TimelineView { anchors { fill: parent; topMargin: bar.height + errors.implicitHeight + firstRun.implicitHeight } screens: shell.screens; narrow: shell.narrow }
        Loader {
            anchors.fill: parent
            sourceComponent: shell.page === Navigation.Trash ? trash : shell.page === Navigation.Settings ? settings : null
            onLoaded: item.forceActiveFocus()
            Component { id: trash; TrashPage { screens: shell.screens; topInset: errors.implicitHeight } }
            Component { id: settings; SettingsPage { screens: shell.screens; topInset: errors.implicitHeight } }
        }
        ErrorBanner { id: errors; y: shell.narrow ? 52 : 68; width: parent.width; banner: shell.screens.banner }
    }
    Loader {
        anchors { right: parent.right; top: parent.top; bottom: parent.bottom }
        width: shell.panelWidth
        active: shell.hasPanel
        sourceComponent: HistoryPanel { screens: shell.screens }
        onLoaded: item.forceActiveFocus()
    }
    AskingDialog { question: shell.screens.settings.question; onAccepted: shell.screens.settings.accept(); onDismissed: shell.screens.settings.dismiss() }
    Toast { anchors { horizontalCenter: parent.horizontalCenter; bottom: parent.bottom; bottomMargin: 20 } banner: shell.screens.banner }
    Shortcut { sequence: "Esc"; enabled: shell.page !== Navigation.Timeline || shell.hasPanel; onActivated: shell.screens.navigation.back() }
    Shortcut { sequence: "Ctrl+,"; onActivated: shell.screens.navigation.show(Navigation.Settings) }
}
