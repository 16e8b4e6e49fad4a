import QtQuick
import QtQuick.Controls.Basic
import Nomely

// The search of the title bar: results drop down while one types.
FocusScope {
    id: field
    required property SearchScreen search
    // Esc: the keys go back to the list.
    signal escaped()
    implicitWidth: 232
    implicitHeight: 34
    objectName: "searchField"

    SearchLine {
        id: line
        objectName: "searchLine"
        anchors.fill: parent
        focus: true
        search: field.search
        onEscaped: field.escaped()
        background: Rectangle {
            radius: 10
            color: line.activeFocus ? Theme.card : Theme.sidebar
            border { width: line.activeFocus ? 2 : 0; color: Theme.accent }
        }
        onActiveFocusChanged: if (activeFocus) results.isDismissed = false
    }
    Text { visible: !line.activeFocus && !line.text; anchors { right: parent.right; rightMargin: 11; verticalCenter: parent.verticalCenter } text: "Ctrl F"; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.tiny } Accessible.ignored: true }

    Popup {
        id: results
        property bool isDismissed: false
        objectName: "searchPopup"
        x: field.width - width
        y: field.height + 6
        width: Math.max(field.width, Math.min(440, field.Window.width - 24))
        padding: 0
        focus: false
        closePolicy: Popup.CloseOnPressOutsideParent
        visible: line.activeFocus && field.search.hasWords && !isDismissed && content.implicitHeight > 12
        onClosed: if (line.activeFocus) isDismissed = true
        background: Rectangle { radius: Theme.radius; color: Theme.raised; border { width: 1; color: Theme.line } }
        contentItem: SearchResults {
            id: content
            search: field.search
            maximumHeight: Math.min(520, field.Window.height - 100)
            onCleared: line.forceActiveFocus()
        }
    }
    Connections {
        target: field.search
        function onQueryChanged() { results.isDismissed = false }
        function onOpened() { results.isDismissed = true; field.escaped() }
    }
    function takeFocus() {
        line.forceActiveFocus(Qt.ShortcutFocusReason)
        line.selectAll()
    }
}
