import QtQuick
import QtQuick.Controls.Basic
import Nomely

// Five faces; the one that holds is taken back by another click.
Popup {
    id: picker
    objectName: "moodPicker"
    property int mood
    property var faces: []
    signal picked(int mood)
    padding: 6
    focus: true
    background: Rectangle { radius: 10; color: Theme.raised; border { width: 1; color: Theme.line } }
    contentItem: Row {
        spacing: 2
        Repeater {
            model: 5
            AbstractButton {
                id: face
                required property int index
                objectName: "mood" + (index + 1)
                width: 36; height: 36
                focus: index === 0
                focusPolicy: Qt.TabFocus
                checked: picker.mood === index + 1
                Accessible.role: Accessible.RadioButton
                Accessible.name: qsTr("心情 %1").arg(index + 1)
                onClicked: { picker.picked(checked ? 0 : index + 1); picker.close() }
                KeyNavigation.right: nextItemInFocusChain(true)
                KeyNavigation.left: nextItemInFocusChain(false)
                Keys.onReturnPressed: clicked()
                background: Rectangle { radius: 8; color: face.checked ? Theme.accentSoft : face.hovered ? Theme.hover : "transparent"; FocusRing { target: face } }
                contentItem: Text { text: picker.faces[face.index] ?? ""; horizontalAlignment: Text.AlignHCenter; verticalAlignment: Text.AlignVCenter; font { family: Theme.emoji; pixelSize: 20 } }
            }
        }
    }
}
