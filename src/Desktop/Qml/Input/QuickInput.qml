import QtQuick
import QtQuick.Controls.Basic
import Nomely

// The input above the list: a line until it is used, then it grows with the text.
FocusScope {
    id: box
    required property QuickInputScreen screen
    property bool narrow: false
    // The window's height, which it takes at most 40 % of, or most of it when enlarged.
    property real room: 800
    property bool enlarged: false
    // How saving goes, said where nothing more urgent is.
    property string saveNote
    property bool unsaved: false
    // The keyboard wants out of the text.
    signal leaveAsked()
    readonly property bool composing: writing.composing
    readonly property bool inUse: activeFocus || screen.isFilled || moods.opened || days.opened || files.shown || writing.menuOpened
    readonly property real most: Math.round(room * (enlarged ? 0.8 : 0.4))
    readonly property real extra: inUse ? 28 + tools.height + (strip.visible ? strip.height + 10 : 0) + 10 : 28
    implicitHeight: inUse ? Math.max(enlarged ? most : 0, Math.min(most, Math.max(26, Math.ceil(writing.implicitHeight)) + extra)) : 48
    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("写笔记")

    // Puts the caret into the text.
    function write() { writing.area.forceActiveFocus() }
    function pickFiles() { files.open() }

    Rectangle {
        visible: box.activeFocus
        anchors { fill: parent; margins: -3 }
        radius: Theme.radius + 3
        color: Theme.accentSoft
    }
    Rectangle {
        id: frame
        anchors.fill: parent
        radius: Theme.radius
        color: Theme.raised
        border { width: 1; color: box.activeFocus ? Qt.tint(Theme.line, Qt.rgba(Theme.accent.r, Theme.accent.g, Theme.accent.b, 0.55)) : Theme.line }
    }
    MarkdownArea {
        id: writing
        objectName: "quickText"
        focus: true
        x: 16
        y: box.inUse ? 14 : 11
        width: parent.width - 32
        height: Math.max(26, box.enlarged ? box.most - box.extra : Math.min(box.most - box.extra, implicitHeight))
        editor: box.screen.editor
        label: qsTr("写一条笔记")
        placeholder: qsTr("写点什么…")
    }
    Text {
        objectName: "saveNote"
        visible: !box.inUse && text
        anchors { right: parent.right; rightMargin: 16; verticalCenter: parent.verticalCenter }
        text: box.saveNote
        color: box.unsaved ? Theme.bad : Theme.text3
        font { family: Theme.sans; pixelSize: Theme.small }
        Accessible.role: Accessible.StatusBar
        Accessible.name: text
    }
    AttachmentStrip {
        id: strip
        visible: box.inUse && attachments.count > 0
        x: 16
        width: parent.width - 32
        anchors { bottom: tools.top; bottomMargin: 10 }
        attachments: box.screen.attachments
    }
    Item {
        id: tools
        visible: box.inUse
        x: 16
        width: parent.width - 32
        height: 34
        anchors { bottom: parent.bottom; bottomMargin: 8 }
        Row {
            x: -7
            anchors.verticalCenter: parent.verticalCenter
            spacing: box.narrow ? 0 : 2
            IconButton { objectName: "tagButton"; glyph: "hash"; hint: qsTr("标签"); onClicked: box.screen.editor.insertTagSign() }
            IconButton { objectName: "checkButton"; glyph: "check"; hint: qsTr("待办"); onClicked: box.screen.editor.apply(MarkdownEditor.Checklist) }
            IconButton { objectName: "fileButton"; glyph: "image"; hint: qsTr("图片和文件"); onClicked: files.open() }
            IconButton {
                objectName: "moodButton"
                glyph: box.screen.mood > 0 ? "" : "smile"
                hint: box.screen.mood > 0 ? qsTr("心情 %1").arg(box.screen.mood) : qsTr("心情")
                onClicked: moods.open()
                Text { anchors.centerIn: parent; visible: box.screen.mood > 0; text: box.screen.moods[box.screen.mood - 1] ?? ""; font { family: Theme.emoji; pixelSize: 17 } }
                LazyPopup {
                    id: moods
                    sourceComponent: MoodPicker {
                        parent: moods
                        y: moods.parent.height + 6
                        x: -80
                        margins: 8
                        mood: box.screen.mood
                        faces: box.screen.moods
                        onPicked: mood => box.screen.mood = mood
                        onClosed: box.write()
                    }
                }
            }
            IconButton { objectName: "enlargeButton"; visible: !box.narrow; glyph: "expand"; checked: box.enlarged; hint: box.enlarged ? qsTr("收起") : qsTr("放大"); onClicked: { box.enlarged = !box.enlarged; box.write() } }
            Text {
                objectName: "inputNotice"
                visible: text
                anchors.verticalCenter: parent.verticalCenter
                leftPadding: 8
                text: box.screen.notice || box.saveNote
                color: !box.screen.notice && box.unsaved ? Theme.bad : Theme.text3
                font { family: Theme.sans; pixelSize: Theme.small }
                Accessible.role: Accessible.StatusBar
                Accessible.name: text
            }
        }
        Row {
            anchors { right: parent.right; verticalCenter: parent.verticalCenter }
            spacing: 12
            AbstractButton {
                id: dayButton
                objectName: "dayButton"
                anchors.verticalCenter: parent.verticalCenter
                implicitWidth: dayRow.implicitWidth + 12
                implicitHeight: 28
                focusPolicy: Qt.TabFocus
                Accessible.role: Accessible.Button
                Accessible.name: qsTr("日期：%1").arg(box.screen.dateText)
                onClicked: { box.screen.beginPicking(); days.open() }
                Keys.onReturnPressed: clicked()
                background: Rectangle { radius: 8; color: dayButton.hovered ? Theme.hover : "transparent"; FocusRing { target: dayButton } }
                contentItem: Item {
                    Row {
                        id: dayRow
                        anchors.centerIn: parent
                        spacing: 5
                        Icon { anchors.verticalCenter: parent.verticalCenter; name: "today"; size: 14 }
                        Text { objectName: "dayText"; anchors.verticalCenter: parent.verticalCenter; visible: !box.narrow || !(box.screen.notice || box.saveNote); text: box.screen.dateText; color: Theme.text2; font { family: Theme.sans; pixelSize: Theme.small } }
                    }
                }
                LazyPopup { id: days; sourceComponent: DatePicker { parent: dayButton; y: parent.height + 6; x: parent.width - width; month: box.screen.month; onClosed: box.write() } }
            }
            PushButton {
                objectName: "submitButton"
                anchors.verticalCenter: parent.verticalCenter
                primary: true
                enabled: box.screen.canSubmit
                text: qsTr("记录")
                keyHint: box.narrow ? "" : "Ctrl ↵"
                onClicked: box.screen.submit()
            }
        }
    }
    Shortcut { enabled: box.activeFocus && !box.composing && !box.narrow; sequence: "Ctrl+E"; onActivated: box.enlarged = !box.enlarged }
    FilePicker { id: files; attachments: box.screen.attachments }
    Connections {
        target: box.screen
        function onSubmitted() { box.enlarged = false }
        function onShownAsked() { box.write() }
    }
    Connections {
        target: box.screen.editor
        function onEscaped() { box.leaveAsked() }
    }
}
