import QtQuick
import QtQuick.Window
import Nomely

// A line icon in one colour, sharp at any scale.
Image {
    id: icon
    property string name
    property color tint: Theme.text2
    property real weight: 1.7
    property int size: 16
    width: size
    height: size
    sourceSize: Qt.size(Math.round(size * Screen.devicePixelRatio), Math.round(size * Screen.devicePixelRatio)) // qmllint disable type
    smooth: true
    Accessible.ignored: true
    source: name ? "image://icon/" + name + "/" + String(tint).slice(-6) + "/" + (name === "more" ? 3 : weight) : ""
}
