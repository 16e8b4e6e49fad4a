import QtQuick
import QtQuick.Controls.Basic
import Nomely

// Where a link leads, while the pointer rests on it.
ToolTip {
    id: hint
    property string address
    delay: 400
    visible: address
    contentItem: Text {
        text: hint.address
        elide: Text.ElideMiddle
        width: Math.min(implicitWidth, 420)
        color: Theme.toastText
        font { family: Theme.sans; pixelSize: Theme.small }
    }
    background: Rectangle { radius: 6; color: Theme.toast }
}
