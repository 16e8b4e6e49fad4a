import QtQuick
import QtQuick.Controls.Basic
import Nomely

Switch {
    id: control
    property string label
    implicitHeight: 28
    focusPolicy: Qt.TabFocus
    Accessible.role: Accessible.CheckBox
    Accessible.name: label || text
    indicator: Rectangle {
        x: control.width - width
        anchors.verticalCenter: parent.verticalCenter
        width: 36; height: 20; radius: 10
        color: control.checked ? Theme.accent : Theme.lineStrong
        Rectangle {
            x: control.checked ? 18 : 2; y: 2
            width: 16; height: 16; radius: 8
            color: Theme.raised
            Behavior on x { NumberAnimation { duration: Theme.motion } }
        }
        FocusRing { target: control; radius: 12 }
    }
    contentItem: Text { text: control.text; color: Theme.text; rightPadding: 48; verticalAlignment: Text.AlignVCenter; font { family: Theme.sans; pixelSize: Theme.normal } }
}
