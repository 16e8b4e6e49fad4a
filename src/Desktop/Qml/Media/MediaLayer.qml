import QtQuick
import QtQuick.Dialogs
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
        sourceComponent: FileDialog {
            fileMode: FileDialog.SaveFile
            title: qsTr("另存为")
            onAccepted: over.screens.media.saveTo(selectedFile)
        }
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
