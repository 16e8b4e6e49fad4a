import QtQuick
import Nomely

// One memo on a page of its own, with nothing beside the text.
FocusScope {
    id: page
    required property FocusEditorScreen screen
    property bool narrow: false
    readonly property bool composing: writing.composing
    readonly property real column: Math.min(680, width - (narrow ? 32 : 48))
    signal historyAsked()
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("专注编辑")

    Rectangle { anchors.fill: parent; color: Theme.card }
    Item {
        id: bar
        width: parent.width
        height: 52
        Row {
            id: left
            x: 12
            height: parent.height
            spacing: 10
            IconButton { objectName: "leaveEditor"; anchors.verticalCenter: parent.verticalCenter; glyph: "left"; hint: qsTr("返回") + "  Esc"; onClicked: page.screen.leave() }
            Text { objectName: "editorTitle"; anchors.verticalCenter: parent.verticalCenter; text: page.screen.title; color: Theme.text; font { family: Theme.serif; pixelSize: 15; bold: true } Accessible.role: Accessible.Heading; Accessible.name: text }
            IconButton {
                objectName: "editorMood"
                anchors.verticalCenter: parent.verticalCenter
                glyph: page.screen.mood > 0 ? "" : "smile"
                tint: Theme.text3
                hint: page.screen.mood > 0 ? qsTr("心情 %1").arg(page.screen.mood) : qsTr("心情")
                onClicked: moods.open()
                Text { anchors.centerIn: parent; visible: page.screen.mood > 0; text: page.screen.moods[page.screen.mood - 1] ?? ""; font { family: Theme.emoji; pixelSize: 16 } }
                MoodPicker { id: moods; y: parent.height + 6; margins: 8; mood: page.screen.mood; faces: page.screen.moods; onPicked: mood => page.screen.mood = mood; onClosed: writing.area.forceActiveFocus() }
            }
            EditorTags { visible: !page.narrow; height: parent.height; screen: page.screen }
        }
        Row {
            anchors { right: parent.right; rightMargin: 16; verticalCenter: parent.verticalCenter }
            spacing: 12
            Text {
                objectName: "editorStatus"
                visible: text
                anchors.verticalCenter: parent.verticalCenter
                text: page.screen.notice || page.screen.status
                color: Theme.text3
                font { family: Theme.sans; pixelSize: Theme.small }
                Accessible.role: Accessible.StatusBar
                Accessible.name: text
            }
            IconButton { objectName: "editorHistory"; visible: !page.narrow; anchors.verticalCenter: parent.verticalCenter; glyph: "history"; hint: qsTr("历史"); onClicked: page.historyAsked() }
            PushButton { objectName: "editorSave"; anchors.verticalCenter: parent.verticalCenter; primary: true; enabled: !page.screen.isSaving && page.screen.conflict === FocusEditorScreen.NoConflict; text: qsTr("保存"); onClicked: page.screen.save(); Hint { text: "Ctrl+S" } }
        }
    }
    EditorTags { id: tagLine; visible: page.narrow; x: 20; anchors.top: bar.bottom; height: 30; screen: page.screen }
    MarkdownArea {
        id: writing
        objectName: "editorText"
        focus: true
        anchors { top: page.narrow ? tagLine.bottom : bar.bottom; topMargin: page.narrow ? 8 : 24; bottom: strip.visible ? strip.top : tools.top; bottomMargin: 12 }
        x: (parent.width - width) / 2
        width: page.column
        bottomPadding: 80
        fontSize: Theme.editor
        headingSize: Theme.editor + 5
        editor: page.screen.editor
        label: qsTr("正文")
        placeholder: qsTr("从这里写起")
    }
    AttachmentStrip {
        id: strip
        x: (parent.width - page.column) / 2
        width: page.column
        anchors { bottom: tools.top; bottomMargin: 12 }
        attachments: page.screen.attachments
    }
    FormatBar {
        id: tools
        anchors { bottom: parent.bottom; bottomMargin: page.narrow ? 12 : 20; horizontalCenter: parent.horizontalCenter }
        editor: page.screen.editor
        narrow: page.narrow
        onFilesAsked: files.open()
    }
    Text {
        objectName: "editorCount"
        visible: !page.narrow
        x: 24
        anchors { verticalCenter: tools.verticalCenter }
        text: page.screen.count
        color: Theme.text3
        font { family: Theme.sans; pixelSize: Theme.small }
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    FilePicker { id: files; attachments: page.screen.attachments }
    ConflictView {
        objectName: "conflict"
        anchors { fill: parent; topMargin: bar.height }
        visible: page.screen.conflict !== FocusEditorScreen.NoConflict
        screen: page.screen
        narrow: page.narrow
    }
    Shortcut { sequence: "Ctrl+S"; enabled: page.visible && !page.composing; onActivated: page.screen.save() }
    Shortcut { sequence: "Escape"; enabled: page.visible && !page.composing && !writing.area.activeFocus; onActivated: page.screen.leave() }
    Connections {
        target: page.screen
        function onOpened() { writing.area.forceActiveFocus() }
    }
}
