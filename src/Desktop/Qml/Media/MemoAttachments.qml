import QtQuick
import Nomely

// What a memo has beside its text: pictures, sounds, files.
Column {
    id: attachments
    required property memoHandle memo
    required property DesktopScreens screens
    visible: pictures.count + sounds.count + files.count > 0
    spacing: 8
    AttachmentModel { id: pictures; media: attachments.screens.media; memo: attachments.memo; kind: AttachmentModel.Images; most: 9 }
    AttachmentModel { id: sounds; media: attachments.screens.media; memo: attachments.memo; kind: AttachmentModel.Audio }
    AttachmentModel { id: files; media: attachments.screens.media; memo: attachments.memo; kind: AttachmentModel.Files }
    Grid {
        id: grid
        visible: pictures.count > 0
        columns: Math.max(1, Math.min(3, pictures.shown))
        spacing: 8
        readonly property real cell: Math.floor((attachments.width - spacing * (columns - 1)) / columns)
        Repeater {
            model: pictures
            PhotoTile {
                id: photo
                required property int index
                required property string path
                objectName: "photo"
                width: grid.cell
                height: grid.columns > 1 ? Math.round(width * 0.66) : Math.min(Math.round(width * 0.62), 420)
                onClicked: attachments.screens.viewer.view(attachments.memo, index)
                onMenuAsked: menu.offer(photo, path, name, true)
            }
        }
    }
    Repeater {
        model: sounds
        AudioStrip {
            id: sound
            width: attachments.width
            memo: attachments.memo
            screens: attachments.screens
            onMenuAsked: menu.offer(sound, path, name, false)
        }
    }
    Flow {
        visible: files.count > 0
        width: parent.width
        spacing: 8
        Repeater {
            model: files
            FileTile {
                id: file
                required property string path
                objectName: "file"
                width: attachments.width < 480 ? attachments.width : Math.floor((attachments.width - 8) / 2)
                onClicked: attachments.screens.media.open(path)
                onMenuAsked: menu.offer(file, path, name, false)
            }
        }
    }
    // Made when it is first asked for: there are many cards.
    Loader {
        id: menu
        active: false
        visible: false
        sourceComponent: AttachmentMenu { media: attachments.screens.media }
        function offer(from, path, name, isPicture) {
            active = true
            item.path = path
            item.name = name
            item.isPicture = isPicture
            item.popup(from, 0, from.height)
        }
    }
}
