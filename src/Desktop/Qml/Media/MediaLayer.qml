import QtQuick
import Nomely

// What attachments have over the window: the viewer, and the question where to save one.
Item {
    id: over
    required property DesktopScreens screens
    ImageViewer { media: over.screens.media; screen: over.screens.viewer }
    // Made when it is first asked for: it loads a good deal.
    Loader {
        id: saving
        active: false
        source: "SaveFile.qml"
    }
    Connections {
        target: saving.item
        function onAccepted() { over.screens.media.saveTo(saving.item.selectedFile) } // qmllint disable type
    }
    Connections {
        target: over.screens.media
        function onSaveAsked(suggested) {
            saving.active = true
            saving.item.currentFolder = suggested.toString().replace(/[^/]*$/, "")
            saving.item.selectedFile = suggested
            saving.item.open()
        }
    }
}
