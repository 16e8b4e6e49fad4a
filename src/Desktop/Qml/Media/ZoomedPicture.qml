import QtQuick
import QtQuick.Window
import Nomely

// A picture that lies wholly in view until it is brought closer by the wheel, a double click or keys
// and then moved about.
Item {
    id: item
    required property string source
    required property string name
    readonly property bool failed: !source || whole.status === Image.Error
    readonly property alias zoom: frame.zoom
    readonly property real ratio: Screen.devicePixelRatio
    // Pixels that the sharper picture is asked for; nothing while the whole one is sharp.
    property size wanted: Qt.size(0, 0)
    clip: true
    Accessible.role: Accessible.Graphic
    Accessible.name: name
    function zoomBy(factor) { frame.zoomBy(factor) }
    function moveBy(right, down) { frame.moveBy(right, down) }
    function fit() { frame.fit() }

    ZoomFrame {
        id: frame
        view: Qt.size(item.width, item.height)
        picture: whole.status === Image.Ready ? Qt.size(whole.implicitWidth / item.ratio, whole.implicitHeight / item.ratio) : Qt.size(0, 0)
        onFrameChanged: settled.restart()
    }
    Image {
        id: whole
        objectName: "viewerImage"
        x: frame.frame.x; y: frame.frame.y; width: frame.frame.width; height: frame.frame.height
        cache: false
        smooth: true
        source: item.source
        sourceSize: Qt.size(Math.round(item.width * item.ratio), Math.round(item.height * item.ratio)) // qmllint disable type
    }
    Image {
        x: frame.frame.x; y: frame.frame.y; width: frame.frame.width; height: frame.frame.height
        cache: false
        smooth: true
        visible: frame.zoom > 1 && status === Image.Ready
        source: item.wanted.width > 0 ? item.source : ""
        sourceSize: item.wanted // qmllint disable type
    }
    Timer {
        id: settled
        interval: 200
        onTriggered: item.wanted = frame.zoom > 1 ? Qt.size(Math.round(frame.frame.width * item.ratio), Math.round(frame.frame.height * item.ratio)) : Qt.size(0, 0)
    }
    WheelHandler { acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad; onWheel: event => frame.zoomBy(Math.pow(1.2, event.angleDelta.y / 120), Qt.point(event.x, event.y)) }
    DragHandler {
        id: drag
        property vector2d done
        target: null
        cursorShape: active ? Qt.ClosedHandCursor : Qt.ArrowCursor
        onActiveChanged: done = Qt.vector2d(0, 0)
        onTranslationChanged: {
            if (!active) return
            frame.moveBy(translation.x - done.x, translation.y - done.y)
            done = Qt.vector2d(translation.x, translation.y)
        }
    }
    TapHandler { onDoubleTapped: point => frame.zoom > 1 ? frame.fit() : frame.zoomBy(2.5, point.position) }
}
