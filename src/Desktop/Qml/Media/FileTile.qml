import QtQuick
import QtQuick.Controls.Basic
import Nomely

// A file of a memo, which opens in the desktop's program for it.
AbstractButton {
    id: tile
    required property string name
    required property string glyph
    required property color tint
    required property string note
    required property string sizeLabel
    required property bool isMissing
    readonly property string detail: isMissing ? qsTr("文件不在了") : sizeLabel + (sizeLabel && note ? " · " : "") + note
    signal menuAsked()
    implicitHeight: 52
    focusPolicy: Qt.TabFocus
    Accessible.role: Accessible.Button
    Accessible.name: qsTr("附件 %1，%2").arg(name).arg(detail)
    background: Rectangle {
        radius: 10
        color: tile.hovered || tile.down ? Qt.tint(Theme.sunken, Theme.hover) : Theme.sunken
        FocusRing { target: tile; radius: 12 }
    }
    contentItem: Item {
        // Takes the right button from the card, too; a handler would leave it both menus.
        MouseArea { anchors.fill: parent; acceptedButtons: Qt.RightButton; cursorShape: Qt.PointingHandCursor; onClicked: tile.menuAsked() }
        Rectangle {
            id: badge
            x: 10
            anchors.verticalCenter: parent.verticalCenter
            width: 34; height: 34; radius: 8
            color: Qt.tint(Theme.card, Qt.rgba(tile.tint.r, tile.tint.g, tile.tint.b, 0.16))
            opacity: tile.isMissing ? 0.5 : 1
            Icon { anchors.centerIn: parent; name: tile.glyph; size: 18; tint: Qt.tint(tile.tint, Qt.rgba(Theme.text.r, Theme.text.g, Theme.text.b, 0.25)) }
        }
        Column {
            anchors { left: badge.right; leftMargin: 10; right: parent.right; rightMargin: 12; verticalCenter: parent.verticalCenter }
            spacing: 1
            Text { width: parent.width; text: tile.name; elide: Text.ElideMiddle; color: tile.isMissing ? Theme.text3 : Theme.text; font { family: Theme.sans; pixelSize: Theme.normal } }
            Text { visible: text; width: parent.width; text: tile.detail; elide: Text.ElideRight; color: tile.isMissing ? Theme.bad : Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
        }
    }
    padding: 0
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    Keys.onMenuPressed: menuAsked()
    Shortcut { sequence: "Shift+F10"; enabled: tile.activeFocus; onActivated: tile.menuAsked() }
}
