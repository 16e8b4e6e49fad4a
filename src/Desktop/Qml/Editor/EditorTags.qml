import QtQuick
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
        onTextEdited: tags.screen.tagChoices.type(text)
        onAccepted: add(text)
        Keys.onPressed: event => event.accepted = !inputMethodComposing && event.modifiers === Qt.NoModifier && tags.screen.tagChoices.press(event.key)
        Keys.onShortcutOverride: event => event.accepted = event.key === Qt.Key_Escape
        Keys.onEscapePressed: if (!tags.screen.tagChoices.press(Qt.Key_Escape)) { clear(); visible = false; adder.forceActiveFocus() }
        onActiveFocusChanged: if (!activeFocus) { add(text); visible = false }
        function add(tag) { tags.screen.tagChoices.close(); tags.screen.addTag(tag); clear() }
        TagPopup { objectName: "tagFieldPopup"; completion: tags.screen.tagChoices; place: Qt.rect(8, 0, 0, field.height) }
        Connections {
            target: tags.screen.tagChoices
            enabled: field.visible
            function onChosen(tag) { field.add(tag) }
        }
    }
}
