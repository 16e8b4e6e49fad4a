import QtQuick
import Nomely

// Where a search is typed. Up and Down choose a result without leaving it.
TextInputLine {
    id: line
    required property SearchScreen search
    // Esc, with nothing left to take back here.
    signal escaped()
    leftPadding: 34
    rightPadding: clear.visible ? 32 : 12
    label: qsTr("搜索")
    placeholderText: qsTr("搜索笔记或 #标签")
    text: search.query
    inputMethodHints: Qt.ImhNoPredictiveText
    onTextEdited: search.query = text
    onAccepted: search.accept()
    Keys.onUpPressed: search.moveCurrent(-1)
    Keys.onDownPressed: search.moveCurrent(1)
    Keys.onPressed: event => {
        event.accepted = !inputMethodComposing && (event.key === Qt.Key_PageUp || event.key === Qt.Key_PageDown)
        if (event.accepted) search.moveCurrent(event.key === Qt.Key_PageUp ? -6 : 6)
    }
    Keys.onEscapePressed: event => {
        event.accepted = !inputMethodComposing
        if (event.accepted) { search.leave(); line.escaped() }
    }
    Icon { x: 11; anchors.verticalCenter: parent.verticalCenter; name: "search"; size: 15; tint: Theme.text3 }
    IconButton {
        id: clear
        objectName: "searchClearText"
        visible: line.text
        anchors { right: parent.right; rightMargin: 4; verticalCenter: parent.verticalCenter }
        implicitWidth: 26
        implicitHeight: 26
        glyph: "close"
        glyphSize: 12
        hint: qsTr("清除")
        focusPolicy: Qt.NoFocus
        onClicked: { line.search.leave(); line.forceActiveFocus() }
    }
}
