import QtQuick
import Nomely

// What Markdown can do, for the pointer.
Rectangle {
    id: bar
    required property MarkdownEditor editor
    property bool narrow: false
    signal filesAsked()
    implicitWidth: row.implicitWidth + 20
    implicitHeight: 44
    radius: Theme.radius
    color: Theme.raised
    border { width: 1; color: Theme.line }
    Accessible.role: Accessible.ToolBar
    Accessible.name: qsTr("格式")
    component Format: IconButton {
        required property int command
        implicitWidth: bar.narrow ? 32 : 36
        onClicked: bar.editor.apply(command)
    }
    Row {
        id: row
        anchors.centerIn: parent
        Format { glyph: "heading"; hint: qsTr("标题") + "  Ctrl+Alt+1"; command: MarkdownEditor.Heading }
        Format { objectName: "boldButton"; glyph: "bold"; hint: qsTr("加粗") + "  Ctrl+B"; command: MarkdownEditor.Bold; checked: bar.editor.isInsideBold }
        Format { visible: !bar.narrow; glyph: "italic"; hint: qsTr("斜体") + "  Ctrl+I"; command: MarkdownEditor.Italic }
        Format { glyph: "list"; hint: qsTr("列表") + "  Ctrl+Alt+8"; command: MarkdownEditor.Bullets }
        Format { glyph: "numbers"; hint: qsTr("编号") + "  Ctrl+Alt+7"; command: MarkdownEditor.Numbers }
        Format { glyph: "check"; hint: qsTr("待办"); command: MarkdownEditor.Checklist }
        Format { glyph: "quote"; hint: qsTr("引用"); command: MarkdownEditor.Quote }
        Format { glyph: "code"; hint: qsTr("代码") + "  Ctrl+`"; command: MarkdownEditor.Code }
        Format { visible: !bar.narrow; glyph: "link"; hint: qsTr("链接") + "  Ctrl+K"; command: MarkdownEditor.Link }
        IconButton { objectName: "editorFileButton"; implicitWidth: bar.narrow ? 32 : 36; glyph: "image"; hint: qsTr("图片和文件"); onClicked: bar.filesAsked() }
    }
}
