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
        MediaLayer { screens: shell.screens }
        TimelineView { anchors { fill: parent; topMargin: bar.height } screens: shell.screens; narrow: shell.narrow }
    }
}
