import QtQuick
import Nomely

// Code as it was written.
Rectangle {
    id: box
    required property bodySegment segment
    required property BodySelection selection
    property string keyword
    implicitHeight: text.implicitHeight + 24
    radius: 8
    color: Theme.sunken
    border { width: Theme.dark ? 0 : 1; color: Theme.line }
    // Before its text: what comes last is completed first, and a text completed later clears it.
    BodyDocument {
        id: filling
        document: text.textDocument
        segment: box.segment
        look: CardLook
        keyword: box.keyword
    }
    HoverHandler { id: hover }
    SideScroll {
        x: 14
        y: 12
        width: parent.width - 28
        height: text.implicitHeight
        contentWidth: text.width
        BodyText {
            id: text
            selection: box.selection
            says: filling.plainText
            width: filling.hasLongLine ? box.width - 28 : Math.max(implicitWidth, box.width - 28)
            wrapMode: filling.hasLongLine ? TextEdit.WrapAnywhere : TextEdit.NoWrap
            font { family: Theme.mono; pixelSize: Theme.body - 2 }
        }
    }
    Rectangle {
        visible: !hover.hovered && language.text
        anchors { right: parent.right; top: parent.top; margins: 8 }
        width: language.width + 8
        height: language.height + 4
        color: box.color
        Text {
            id: language
            anchors.centerIn: parent
            text: box.segment.language
            textFormat: Text.PlainText
            elide: Text.ElideRight
            width: Math.min(implicitWidth, box.width / 3)
            color: Theme.text3
            font { family: Theme.sans; pixelSize: Theme.tiny }
        }
    }
    IconButton {
        objectName: "copyCode"
        anchors { right: parent.right; top: parent.top; margins: 5 }
        implicitWidth: 26
        implicitHeight: 26
        glyph: copied.running ? "check" : "copy"
        glyphSize: 15
        tint: copied.running ? Theme.good : Theme.text2
        hint: copied.running ? qsTr("已复制") : qsTr("复制代码")
        opacity: hover.hovered || activeFocus || copied.running ? 1 : 0
        onClicked: { filling.copyCode(); copied.restart() }
        Timer { id: copied; interval: 2000 }
    }
}
