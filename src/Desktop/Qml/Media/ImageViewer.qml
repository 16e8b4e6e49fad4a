import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Templates as T
import Nomely

// A memo's pictures, one at a time, over the whole window.
Popup {
    id: viewer
    required property MediaScreen media
    required property ViewerScreen screen
    objectName: "viewer"
    parent: T.Overlay.overlay
    width: parent ? parent.width : 0
    height: parent ? parent.height : 0
    padding: 0
    modal: true
    focus: true
    closePolicy: Popup.CloseOnEscape
    visible: screen.isOpen
    onClosed: screen.close()
    background: Rectangle { color: Theme.backdrop; Accessible.role: Accessible.Dialog; Accessible.name: qsTr("图片") }
    enter: Transition { NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.motion } }
    exit: Transition { NumberAnimation { property: "opacity"; from: 1; to: 0; duration: Theme.motion } }

    contentItem: FocusScope {
        id: content
        focus: true
        ZoomedPicture { id: picture; objectName: "viewerPicture"; anchors { fill: parent; topMargin: 48; bottomMargin: 56 } source: viewer.screen.source; name: viewer.screen.name; focus: true }
        Column {
            visible: picture.failed
            anchors.centerIn: parent
            spacing: 10
            Text { objectName: "viewerFailure"; text: qsTr("打不开这张图片"); color: Theme.backdropText; font { family: Theme.serif; pixelSize: Theme.heading } Accessible.role: Accessible.AlertMessage; Accessible.name: text }
            LinkButton { anchors.horizontalCenter: parent.horizontalCenter; text: qsTr("用其他程序打开"); ink: Theme.backdropText; onClicked: viewer.media.open(viewer.screen.path) }
        }
        ViewerButton { objectName: "viewerPrevious"; x: 12; anchors.verticalCenter: parent.verticalCenter; visible: viewer.screen.index > 0; overPicture: true; glyph: "left"; hint: qsTr("上一张") + "  ←"; onClicked: viewer.screen.step(-1) }
        ViewerButton { objectName: "viewerNext"; anchors { right: parent.right; rightMargin: 12; verticalCenter: parent.verticalCenter } visible: viewer.screen.index < viewer.screen.count - 1; overPicture: true; glyph: "right"; hint: qsTr("下一张") + "  →"; onClicked: viewer.screen.step(1) }
        Row {
            anchors { right: parent.right; rightMargin: 8; top: parent.top; topMargin: 6 }
            spacing: 2
            ViewerButton { objectName: "viewerCopy"; glyph: "copy"; hint: qsTr("复制图片") + "  Ctrl+C"; onClicked: viewer.media.copyPicture(viewer.screen.path) }
            ViewerButton { objectName: "viewerSave"; glyph: "save"; hint: qsTr("另存为…") + "  Ctrl+S"; onClicked: viewer.media.askToSave(viewer.screen.path, viewer.screen.name) }
            ViewerButton { objectName: "viewerOpen"; glyph: "external"; hint: qsTr("用其他程序打开"); onClicked: viewer.media.open(viewer.screen.path) }
            ViewerButton { objectName: "viewerClose"; glyph: "close"; hint: qsTr("关闭") + "  Esc"; onClicked: viewer.close() }
        }
        Row {
            anchors { horizontalCenter: parent.horizontalCenter; bottom: parent.bottom; bottomMargin: 18 }
            spacing: 12
            Text { objectName: "viewerName"; width: Math.min(implicitWidth, content.width - 180); text: viewer.screen.name; elide: Text.ElideMiddle; color: Theme.backdropText; font { family: Theme.sans; pixelSize: Theme.normal } }
            Text { objectName: "viewerPlace"; visible: viewer.screen.count > 1; text: (viewer.screen.index + 1) + " / " + viewer.screen.count; color: Theme.backdropText; opacity: 0.75; font { family: Theme.sans; pixelSize: Theme.normal } }
            Text { visible: picture.zoom > 1; text: Math.round(picture.zoom * 100) + "%"; color: Theme.backdropText; opacity: 0.75; font { family: Theme.sans; pixelSize: Theme.normal } }
        }
        Shortcut { sequences: ["Left", "PgUp"]; enabled: viewer.visible; onActivated: viewer.screen.step(-1) }
        Shortcut { sequences: ["Right", "PgDown"]; enabled: viewer.visible; onActivated: viewer.screen.step(1) }
        Shortcut { sequence: "Home"; enabled: viewer.visible; onActivated: viewer.screen.step(-viewer.screen.count) }
        Shortcut { sequence: "End"; enabled: viewer.visible; onActivated: viewer.screen.step(viewer.screen.count) }
        Shortcut { sequences: ["+", "=", "Ctrl++"]; enabled: viewer.visible; onActivated: picture.zoomBy(1.25) }
        Shortcut { sequences: ["-", "Ctrl+-"]; enabled: viewer.visible; onActivated: picture.zoomBy(0.8) }
        Shortcut { sequences: ["0", "Ctrl+0"]; enabled: viewer.visible; onActivated: picture.fit() }
        Shortcut { sequence: "Shift+Left"; enabled: viewer.visible; onActivated: picture.moveBy(80, 0) }
        Shortcut { sequence: "Shift+Right"; enabled: viewer.visible; onActivated: picture.moveBy(-80, 0) }
        Shortcut { sequence: "Shift+Up"; enabled: viewer.visible; onActivated: picture.moveBy(0, 80) }
        Shortcut { sequence: "Shift+Down"; enabled: viewer.visible; onActivated: picture.moveBy(0, -80) }
        Shortcut { sequence: "Ctrl+C"; enabled: viewer.visible; onActivated: viewer.media.copyPicture(viewer.screen.path) }
        Shortcut { sequence: "Ctrl+S"; enabled: viewer.visible; onActivated: viewer.media.askToSave(viewer.screen.path, viewer.screen.name) }
    }
}
