import QtQuick
import QtQuick.Controls.Basic
import Nomely

// The memo's tags beside its title, with a field for another one.
Row {
    id: tags
    required property FocusEditorScreen screen
    spacing: 6
    Repeater {
        model: tags.screen.tags
        Chip {
            id: chip
            required property string name
            required property string emoji
            required property string tint
            objectName: "editorTag"
            anchors.verticalCenter: parent.verticalCenter
            text: chip.name
            Binding { target: chip; property: "tint"; value: chip.tint; when: chip.tint }
            removable: true
            Accessible.description: qsTr("按 Delete 去掉这个标签")
            onRemoved: tags.screen.removeTag(name)
        }
    }
    LinkButton {
        id: adder
        objectName: "addTag"
        visible: !field.visible
        anchors.verticalCenter: parent.verticalCenter
        text: qsTr("＋ 标签")
        ink: Theme.text3
        fontSize: Theme.small
        onClicked: { field.visible = true; field.forceActiveFocus() }
    }
    TextInputLine {
        id: field
        objectName: "tagField"
        visible: false
        anchors.verticalCenter: parent.verticalCenter
        implicitHeight: 26
        width: 110
        label: qsTr("新标签")
        font { family: Theme.sans; pixelSize: Theme.small }
        onAccepted: { tags.screen.addTag(text); clear() }
        Keys.onEscapePressed: { clear(); visible = false; adder.forceActiveFocus() }
        onActiveFocusChanged: if (!activeFocus) { tags.screen.addTag(text); clear(); visible = false }
    }
}
