import QtQuick
import QtQuick.Controls.Basic
import Nomely

// What became of the chosen version, or an original file as it was.
Flickable {
    id: view
    required property HistoryScreen history
    contentHeight: column.implicitHeight + 32
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    ScrollBar.vertical: FlatScrollBar {}
    Column {
        id: column
        x: 16; y: 14
        width: view.width - 32
        spacing: 10
        Text { objectName: "historySize"; visible: text; width: parent.width; wrapMode: Text.Wrap; text: view.history.size; color: Theme.text2; font { family: Theme.sans; pixelSize: Theme.small } }
        Text { objectName: "historyDetails"; visible: text; width: parent.width; wrapMode: Text.Wrap; text: view.history.details; color: Theme.text2; font { family: Theme.sans; pixelSize: Theme.small } }
        TextEdit {
            id: words
            objectName: "historyText"
            visible: view.history.isVersionChosen
            width: parent.width
            readOnly: true
            selectByMouse: true
            wrapMode: TextEdit.Wrap
            color: Theme.text
            selectionColor: Theme.selection
            selectedTextColor: Theme.text
            font { family: Theme.sans; pixelSize: Theme.body }
            activeFocusOnTab: true
            Accessible.role: Accessible.EditableText
            Accessible.name: qsTr("这一版改了什么")
            ChangedText {
                document: words.textDocument
                changes: view.history.changes
                added: Theme.good
                addedBackground: Theme.goodSoft
                removed: Theme.bad
                removedBackground: Theme.badSoft
                weak: Theme.text3
            }
        }
        TextEdit {
            objectName: "originalText"
            visible: !view.history.isVersionChosen && text
            width: parent.width
            readOnly: true
            selectByMouse: true
            wrapMode: TextEdit.WrapAnywhere
            textFormat: TextEdit.PlainText
            text: view.history.originalText
            color: Theme.text
            selectionColor: Theme.selection
            selectedTextColor: Theme.text
            font { family: Theme.mono; pixelSize: Theme.small }
            activeFocusOnTab: true
            Accessible.role: Accessible.EditableText
            Accessible.name: qsTr("原文件的内容")
        }
    }
}
