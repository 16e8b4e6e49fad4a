import QtQuick
import Nomely

// The window's contents for one data root.
Item {
    id: shell
    required property DesktopScreens screens
    readonly property bool narrow: width < 720
    Item {
        id: main
        anchors.fill: parent
        TopBar { id: bar; width: parent.width; screens: shell.screens; narrow: shell.narrow }
        QuickInput {
            id: input
            objectName: "quickInput"
            anchors { top: bar.bottom; horizontalCenter: parent.horizontalCenter }
            width: Math.min(Theme.column, parent.width - (shell.narrow ? 24 : 48))
            screen: shell.screens.quickInput
            narrow: shell.narrow
            room: shell.height
            focus: true
        }
        TimelineView { anchors { fill: parent; topMargin: input.y + input.height + 8 } screens: shell.screens; narrow: shell.narrow }
    }
    MediaLayer { screens: shell.screens }
    FocusEditor {
        objectName: "focusEditor"
        anchors.fill: parent
        visible: shell.screens.navigation.page === Navigation.Editor
        screen: shell.screens.focusEditor
        narrow: shell.narrow
    }
}
