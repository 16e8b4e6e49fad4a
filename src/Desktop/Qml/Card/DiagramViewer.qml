import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Templates as T
import QtQuick.Window
import Nomely

// A diagram over the whole window, drawn finer than in its card so that it stays sharp when it is
// brought closer.
Popup {
    id: viewer
    required property string code
    objectName: "diagramViewer"
    parent: T.Overlay.overlay
    width: parent ? parent.width : 0
    height: parent ? parent.height : 0
    padding: 0
    modal: true
    focus: true
    closePolicy: Popup.CloseOnEscape
    background: Rectangle { color: Theme.card; Accessible.role: Accessible.Dialog; Accessible.name: qsTr("图表") }
    enter: Transition { NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.motion } }
    exit: Transition { NumberAnimation { property: "opacity"; from: 1; to: 0; duration: Theme.motion } }
    contentItem: FocusScope {
        id: content
        focus: true
        Diagram {
            id: diagram
            code: viewer.code
            dark: Theme.dark
            pixelRatio: Math.min(4, 2 * content.Screen.devicePixelRatio)
        }
        ZoomedPicture {
            id: picture
            objectName: "diagramInFull"
            anchors { fill: parent; margins: 48 }
            visible: diagram.status === Diagram.Drawn
            source: diagram.picture
            name: viewer.code
            focus: true
        }
        Text {
            anchors.centerIn: parent
            visible: !picture.visible
            text: diagram.message || qsTr("正在画图…")
            color: Theme.text3
            font { family: Theme.sans; pixelSize: Theme.normal }
        }
        IconButton { objectName: "closeDiagram"; anchors { right: parent.right; top: parent.top; margins: 8 } glyph: "close"; hint: qsTr("关闭") + "  Esc"; onClicked: viewer.close() }
        Shortcut { sequences: ["+", "=", "Ctrl++"]; enabled: viewer.visible; onActivated: picture.zoomBy(1.25) }
        Shortcut { sequences: ["-", "Ctrl+-"]; enabled: viewer.visible; onActivated: picture.zoomBy(0.8) }
        Shortcut { sequences: ["0", "Ctrl+0"]; enabled: viewer.visible; onActivated: picture.fit() }
    }
}
