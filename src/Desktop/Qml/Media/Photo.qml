import QtQuick
import QtQuick.Window
import Nomely

// A picture of a file, cut to this item's size, with round corners.
Item {
    id: photo
    required property string source
    property real radius: 8
    property string failure: qsTr("打不开这张图片")
    readonly property bool failed: !source || image.status === Image.Error
    Rectangle {
        anchors.fill: parent
        visible: image.status !== Image.Ready
        radius: photo.radius
        color: Theme.sunken
        border { width: photo.failed ? 1 : 0; color: Theme.line }
    }
    Image {
        id: image
        anchors.fill: parent
        // The provider keeps what was shown.
        cache: false
        source: photo.source && width > 0 && height > 0 ? photo.source + "?radius=" + Math.round(photo.radius * Screen.devicePixelRatio) : ""
        sourceSize: Qt.size(Math.round(width * Screen.devicePixelRatio), Math.round(height * Screen.devicePixelRatio)) // qmllint disable type
        opacity: status === Image.Ready ? 1 : 0
        Behavior on opacity { NumberAnimation { duration: Theme.motion } }
    }
    Column {
        visible: photo.failed
        anchors.centerIn: parent
        width: parent.width - 16
        spacing: 6
        Icon { anchors.horizontalCenter: parent.horizontalCenter; name: "image"; size: 22; tint: Theme.text3 }
        Text { visible: photo.width > 100 && photo.height > 70; width: parent.width; horizontalAlignment: Text.AlignHCenter; text: photo.failure; elide: Text.ElideRight; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
    }
}
