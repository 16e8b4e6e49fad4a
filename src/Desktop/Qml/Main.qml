import QtQuick
import Nomely

Window {
    id: window
    required property DesktopApplication desktop
    // With room for the frame around it on a small screen.
    width: Math.min(1280, Screen.desktopAvailableWidth - 40)
    height: Math.min(800, Screen.desktopAvailableHeight - 60)
    minimumWidth: 420
    minimumHeight: 480
    visible: true
    title: "Nomely"
    color: Theme.window
    onClosing: close => { close.accepted = false; window.desktop.close() }

    Binding { target: Theme; property: "animated"; value: window.desktop.theme.animated }
    Loader {
        id: loader
        anchors.fill: parent
        focus: true
        active: window.desktop.screens !== null
        sourceComponent: Shell { desktop: window.desktop; screens: window.desktop.screens }
    }
    AskingDialog { question: window.desktop.question; onAccepted: window.desktop.closeAnyway(); onDismissed: window.desktop.stay() }
    Obstacle { visible: text; anchors.fill: parent; text: window.desktop.obstacle }
}
