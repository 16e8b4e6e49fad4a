import QtQuick
import QtQuick.Controls.Basic
import Nomely

// A tag or another small thing that is chosen by a click.
AbstractButton {
    id: chip
    property color tint: Theme.lineStrong
    property string emoji
    property bool removable: false
    signal removed()
    implicitHeight: 24
    implicitWidth: row.implicitWidth + 16
    focusPolicy: Qt.TabFocus
    Accessible.role: Accessible.Button
    Accessible.name: text
    background: Rectangle {
        radius: 12
        color: Qt.tint(Theme.card, Qt.rgba(chip.tint.r, chip.tint.g, chip.tint.b, chip.hovered || chip.checked ? 0.28 : 0.16))
        FocusRing { target: chip; radius: 14 }
    }
    contentItem: Item {
        Row {
            id: row
            anchors.centerIn: parent
            spacing: 4
            Text { visible: chip.emoji; anchors.verticalCenter: parent.verticalCenter; text: chip.emoji; font { family: Theme.emoji; pixelSize: 11 } }
            Text { anchors.verticalCenter: parent.verticalCenter; text: chip.text; color: Theme.text; font { family: Theme.sans; pixelSize: Theme.tagFontSize } }
            Icon {
                visible: chip.removable
                anchors.verticalCenter: parent.verticalCenter
                name: "close"; size: 10; weight: 2.4; tint: Theme.text3
                TapHandler { onTapped: chip.removed() }
            }
        }
    }
    Keys.onReturnPressed: clicked()
    Keys.onDeletePressed: if (removable) removed()
}
