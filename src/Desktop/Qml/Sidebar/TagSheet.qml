import QtQuick
import QtQuick.Controls.Basic
import Nomely

// Renames, merges or deletes a tag in all notes: says how many, asks, and shows how far it is.
Sheet {
    id: sheet
    required property DesktopScreens screens
    readonly property TagsScreen tags: screens.tags
    readonly property bool isWorking: tags.stage === TagsScreen.Working
    objectName: "tagSheet"
    title: tags.title
    closePolicy: Popup.CloseOnEscape
    onClosed: tags.close()
    Connections {
        target: sheet.tags
        function onChanged() { sheet.tags.stage === TagsScreen.Closed ? sheet.close() : sheet.open() }
    }
    onAboutToShow: if (tags.hasOther) field.takeFocus()
    contentItem: Column {
        spacing: 14
        Text { width: parent.width; wrapMode: Text.Wrap; text: sheet.title; color: Theme.text; font { family: Theme.serif; pixelSize: Theme.heading; bold: true } }
        TextInputLine {
            id: field
            objectName: "tagName"
            width: parent.width
            visible: sheet.tags.hasOther
            focus: sheet.tags.hasOther
            enabled: !sheet.isWorking
            label: qsTr("另一个标签的名字")
            placeholderText: label
            text: sheet.tags.other
            onTextEdited: sheet.tags.other = text
            onAccepted: sheet.tags.confirm()
            Keys.onDownPressed: if (choices.count > 0) choices.forceActiveFocus(Qt.TabFocusReason)
            function takeFocus() {
                forceActiveFocus()
                // Its text may be about to change.
                Qt.callLater(selectAll) // qmllint disable type
            }
        }
        ListView {
            id: choices
            objectName: "tagSuggestions"
            visible: sheet.tags.offersTags
            enabled: count > 0 && !sheet.isWorking
            width: parent.width
            // However many there are: nothing moves away from under the pointer.
            height: 6 * 31
            interactive: false
            activeFocusOnTab: true
            model: sheet.tags.suggestions
            Accessible.role: Accessible.List
            Accessible.name: qsTr("已有的标签")
            Keys.onReturnPressed: if (currentItem) sheet.take(currentItem.display) // qmllint disable type
            delegate: Item {
                id: choice
                required property string display
                width: choices.width
                height: 31
                SidebarRow {
                    objectName: "tagSuggestion"
                    width: parent.width
                    focusPolicy: Qt.NoFocus
                    isMarked: choices.activeFocus && choice.ListView.isCurrentItem
                    text: choice.display
                    onClicked: sheet.take(choice.display)
                }
            }
        }
        Text {
            objectName: "tagQuestion"
            width: parent.width
            wrapMode: Text.Wrap
            lineHeight: 1.15
            text: sheet.tags.text
            color: sheet.tags.isRefused ? Theme.bad : Theme.text2
            font { family: Theme.sans; pixelSize: Theme.normal }
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        Rectangle {
            width: parent.width
            height: 4
            radius: 2
            color: Theme.line
            opacity: sheet.isWorking || sheet.tags.stage === TagsScreen.Counting ? 1 : 0
            Accessible.role: Accessible.ProgressBar
            Accessible.name: qsTr("进度")
            Rectangle { width: parent.width * sheet.tags.progress; height: 4; radius: 2; color: Theme.accent }
        }
        Row {
            anchors.right: parent.right
            spacing: 10
            PushButton { objectName: "tagCancel"; focus: !sheet.tags.hasOther; text: sheet.isWorking ? qsTr("停下") : qsTr("取消"); onClicked: sheet.tags.close() }
            PushButton { objectName: "tagConfirm"; primary: true; destructive: sheet.tags.isDestructive; enabled: sheet.tags.stage === TagsScreen.Ready; text: sheet.tags.confirmText; onClicked: sheet.tags.confirm() }
        }
    }
    function take(name) {
        field.takeFocus()
        tags.other = name
    }
}
