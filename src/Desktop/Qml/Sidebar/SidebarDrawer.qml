import QtQuick
import QtQuick.Controls.Basic
import Nomely

// The sidebar of a narrow window.
Drawer {
    id: drawer
    required property DesktopScreens screens
    property bool narrow: true
    objectName: "drawer"
    width: 280
    interactive: narrow
    background: Rectangle { color: Theme.sidebar }
    onNarrowChanged: if (!narrow) close()
    onOpened: (contents.item as Sidebar).takeFocus()
    Loader {
        id: contents
        anchors.fill: parent
        active: drawer.visible
        sourceComponent: Sidebar { screens: drawer.screens; onChosen: drawer.close() }
    }
}
