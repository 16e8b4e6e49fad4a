import QtQuick
import QtQuick.Controls.Basic
import Nomely

// Two texts of one memo, and what to do about it. Neither is lost.
Rectangle {
    id: view
    required property FocusEditorScreen screen
    property bool narrow: false
    readonly property bool gone: screen.conflict === FocusEditorScreen.Gone
    color: Theme.window
    Accessible.role: Accessible.AlertMessage
    Accessible.name: screen.conflictText

    component Side: Rectangle {
        id: side
        property string title
        property string text
        radius: Theme.radius
        color: Theme.card
        border { width: 1; color: Theme.line }
        Text { id: head; x: 16; y: 12; text: side.title; color: Theme.text2; font { family: Theme.serif; pixelSize: 15; bold: true } }
        Flickable {
            anchors { fill: parent; topMargin: 44; margins: 16 }
            clip: true
            contentHeight: body.implicitHeight
            boundsBehavior: Flickable.StopAtBounds
            ScrollBar.vertical: FlatScrollBar {}
            TextEdit {
                id: body
                width: parent.width
                readOnly: true
                selectByMouse: true
                activeFocusOnTab: true
                textFormat: TextEdit.PlainText
                wrapMode: TextEdit.Wrap
                text: side.text
                color: Theme.text
                selectionColor: Theme.selection
                selectedTextColor: Theme.text
                font { family: Theme.sans; pixelSize: Theme.body }
                Accessible.role: Accessible.EditableText
                Accessible.name: side.title
            }
        }
    }
    Column {
        id: top
        x: 24
        y: 20
        width: parent.width - 48
        spacing: 14
        Row {
            width: parent.width
            spacing: 10
            Icon { name: "warn"; size: 18; tint: Theme.warn }
            Text { objectName: "conflictText"; width: parent.width - 28; text: view.screen.conflictText; wrapMode: Text.Wrap; color: Theme.text; font { family: Theme.sans; pixelSize: Theme.normal } }
        }
        Flow {
            width: parent.width
            spacing: 10
            PushButton { objectName: "keepMine"; visible: !view.gone; primary: true; text: qsTr("保留我的"); onClicked: view.screen.keepMine() }
            PushButton { objectName: "takeTheirs"; visible: !view.gone; text: qsTr("用磁盘上的"); onClicked: view.screen.takeTheirs() }
            PushButton { objectName: "keepBoth"; visible: !view.gone; text: qsTr("两份都留在正文里"); onClicked: view.screen.keepBoth() }
            PushButton { objectName: "saveAsNew"; visible: view.gone; primary: true; text: qsTr("存成新的笔记"); onClicked: view.screen.saveAsNew() }
            PushButton { objectName: "leaveConflict"; text: qsTr("先放着，留作草稿"); onClicked: view.screen.leave() }
        }
    }
    Grid {
        x: 24
        anchors { top: top.bottom; topMargin: 16; bottom: parent.bottom; bottomMargin: 20 }
        columns: view.narrow || view.gone ? 1 : 2
        spacing: 16
        readonly property real sideWidth: columns === 2 ? (view.width - 48 - spacing) / 2 : view.width - 48
        readonly property real sideHeight: view.narrow && !view.gone ? (height - spacing) / 2 : height
        Side { objectName: "mine"; width: parent.sideWidth; height: parent.sideHeight; title: qsTr("我的（没有保存）"); text: view.screen.mine }
        Side { objectName: "theirs"; visible: !view.gone; width: parent.sideWidth; height: parent.sideHeight; title: qsTr("磁盘上的"); text: view.screen.theirs }
    }
}
