import QtQuick
import QtQuick.Controls.Basic
import Nomely

AbstractButton {
    id: control
    property bool playing: false
    implicitWidth: 30
    implicitHeight: 30
    focusPolicy: Qt.TabFocus
    opacity: enabled ? 1 : 0.4
    Accessible.role: Accessible.Button
    Accessible.name: playing ? qsTr("暂停") : qsTr("播放")
    background: Rectangle {
        radius: 15
        color: Theme.accent
        opacity: control.down ? 0.8 : control.hovered ? 0.9 : 1
        FocusRing { target: control; anchors.margins: -3; radius: 18 }
    }
    contentItem: Item { Icon { anchors.centerIn: parent; anchors.horizontalCenterOffset: control.playing ? 0 : 1; name: control.playing ? "pause" : "play"; size: 15; tint: Theme.accentText; weight: 2.2 } }
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
}
