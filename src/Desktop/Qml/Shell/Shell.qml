import QtQuick
import Nomely

// The window's contents for one data root.
FocusScope {
    id: shell
    required property DesktopScreens screens
    readonly property Navigation navigation: screens.navigation
    readonly property bool narrow: width < 720
    focus: true

    TimelinePage {
        id: timeline
        anchors.fill: parent
        visible: shell.navigation.page === Navigation.Timeline
        enabled: visible
        focus: visible
        screens: shell.screens
        narrow: shell.narrow
    }
    Loader {
        anchors.fill: parent
        active: shell.navigation.page === Navigation.Editor
        sourceComponent: FocusEditor { objectName: "focusEditor"; screen: shell.screens.focusEditor; narrow: shell.narrow }
        onLoaded: item.forceActiveFocus()
    }
    MediaLayer { screens: shell.screens }
    KeySheet { id: keySheet; objectName: "keySheet" }
    ShellKeys {
        screens: shell.screens
        onInputAsked: timeline.takeInput()
        onRegionAsked: timeline.nextRegion()
        onHelpAsked: keySheet.open()
    }
}
