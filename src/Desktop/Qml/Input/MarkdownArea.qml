import QtQuick
import QtQuick.Controls.Basic
import Nomely

// Where Markdown is written: a text that scrolls, coloured while it is typed, with the tags that
// fit after a "#" and a menu. What it does is its editor's.
FocusScope {
    id: root
    required property MarkdownEditor editor
    property string label
    property string placeholder
    property int fontSize: Theme.body
    property int headingSize: fontSize
    property alias padding: area.padding
    property alias bottomPadding: area.bottomPadding
    readonly property bool composing: area.inputMethodComposing
    readonly property bool menuOpened: menu.opened
    readonly property alias area: area
    implicitHeight: area.implicitHeight

    Flickable {
        id: flickable
        anchors.fill: parent
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        interactive: contentHeight > height
        ScrollBar.vertical: FlatScrollBar {}
        TextArea.flickable: TextArea {
            id: area
            objectName: "text"
            focus: true
            // Per cent of the face's own; each paragraph of the document has it.
            property int lineHeight: Theme.lineHeight
            padding: 0
            leftPadding: 0
            rightPadding: 0
            background: null
            wrapMode: TextArea.Wrap
            textFormat: TextEdit.PlainText
            selectByMouse: true
            persistentSelection: true
            color: Theme.text
            placeholderText: root.placeholder
            placeholderTextColor: Theme.text3
            selectionColor: Theme.selection
            selectedTextColor: Theme.text
            font { family: Theme.sans; pixelSize: root.fontSize }
            cursorDelegate: Rectangle {
                width: 2
                color: Theme.accent
                visible: area.cursorVisible
            }
            Accessible.role: Accessible.EditableText
            Accessible.name: root.label
            Component.onCompleted: root.editor.area = area
            Component.onDestruction: root.editor.area = null
        }
    }
    MimeDropArea {
        id: drop
        anchors.fill: parent
        editor: root.editor
    }
    Rectangle {
        anchors { fill: parent; margins: -6 }
        visible: drop.containsDrag
        radius: 8
        color: Theme.accentSoft
        opacity: 0.9
        border { width: 1; color: Theme.accent }
        Text { anchors.centerIn: parent; text: qsTr("松手放到这里"); color: Theme.accent; font { family: Theme.sans; pixelSize: Theme.normal } }
    }
    TagPopup { parent: area; completion: root.editor.completion; place: root.editor.completion.place }
    ContextMenu {
        id: menu
        objectName: "textMenu"
        MenuRow { text: qsTr("撤销"); glyph: "undo"; keyHint: "Ctrl+Z"; enabled: area.canUndo; onTriggered: area.undo() }
        MenuRow { text: qsTr("重做"); keyHint: "Ctrl+Shift+Z"; enabled: area.canRedo; onTriggered: area.redo() }
        MenuLine {}
        MenuRow { text: qsTr("剪切"); keyHint: "Ctrl+X"; enabled: area.selectedText; onTriggered: area.cut() }
        MenuRow { text: qsTr("复制"); glyph: "copy"; keyHint: "Ctrl+C"; enabled: area.selectedText; onTriggered: area.copy() }
        MenuRow { objectName: "pasteRow"; text: qsTr("粘贴"); keyHint: "Ctrl+V"; onTriggered: root.editor.paste() }
        MenuRow { text: qsTr("全选"); keyHint: "Ctrl+A"; onTriggered: area.selectAll() }
    }
    Connections {
        target: root.editor
        function onMenuAsked(at) { menu.popup(area, at.x, at.y) }
    }
    Binding { target: root.editor.highlighter; property: "weak"; value: Theme.text3 }
    Binding { target: root.editor.highlighter; property: "quote"; value: Theme.text2 }
    Binding { target: root.editor.highlighter; property: "accent"; value: Theme.accent }
    Binding { target: root.editor.highlighter; property: "link"; value: Theme.link }
    Binding { target: root.editor.highlighter; property: "code"; value: Theme.sunken }
    Binding { target: root.editor.highlighter; property: "codeFamily"; value: Theme.mono }
    Binding { target: root.editor.highlighter; property: "headingSize"; value: root.headingSize }
    Binding { target: root.editor.highlighter; property: "textSize"; value: root.fontSize }
}
