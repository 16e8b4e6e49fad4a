import QtQuick
import QtQuick.Controls.Basic
import Nomely

// A picture of a memo, which opens in the viewer.
AbstractButton {
    id: tile
    required property string source
    required property string name
    required property string note
    required property bool isMissing
    required property int hidden
    signal menuAsked()
    focusPolicy: Qt.TabFocus
    Accessible.role: Accessible.Button
    Accessible.name: (photo.failed ? photo.failure : hidden > 0 ? qsTr("图片 %1，还有 %2 张").arg(name).arg(hidden) : qsTr("图片 %1").arg(name)) + (note ? "，" + note : "")
    background: FocusRing { target: tile }
    contentItem: Item {
        // Takes the right button from the card, too; a handler would leave it both menus.
        MouseArea { anchors.fill: parent; acceptedButtons: Qt.RightButton; cursorShape: Qt.PointingHandCursor; onClicked: tile.menuAsked() }
        Photo { id: photo; anchors.fill: parent; source: tile.source; failure: tile.isMissing ? qsTr("图片文件不在了") : qsTr("打不开这张图片") }
        Rectangle { anchors.fill: parent; visible: tile.hidden > 0; radius: photo.radius; color: Theme.backdropVeil }
        Text { anchors.centerIn: parent; visible: tile.hidden > 0; text: "+" + tile.hidden; color: Theme.backdropText; font { family: Theme.sans; pixelSize: Theme.title; bold: true } }
    }
    padding: 0
    Hint { text: tile.note }
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    Keys.onMenuPressed: menuAsked()
    Shortcut { sequence: "Shift+F10"; enabled: tile.activeFocus; onActivated: tile.menuAsked() }
}
