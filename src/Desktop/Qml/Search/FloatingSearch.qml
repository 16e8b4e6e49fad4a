import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Templates as T
import Nomely

// The search that floats over any page.
Popup {
    id: panel
    required property SearchScreen search
    objectName: "floatingSearch"
    parent: T.Overlay.overlay
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? Math.max(12, Math.round(parent.height * 0.12)) : 0
    width: parent ? Math.min(parent.width - 24, 560) : 560
    padding: 0
    modal: true
    focus: true
    closePolicy: Popup.CloseOnPressOutside
    background: Rectangle {
        radius: Theme.radius
        color: Theme.raised
        border { width: 1; color: Theme.line }
        Accessible.role: Accessible.Dialog
        Accessible.name: qsTr("搜索")
    }
    T.Overlay.modal: Rectangle { color: Theme.scrim }
    enter: Transition { NumberAnimation { property: "opacity"; from: 0; to: 1; duration: Theme.motion } }
    exit: Transition { NumberAnimation { property: "opacity"; from: 1; to: 0; duration: Theme.motion } }
    onOpened: line.takeFocus()
    contentItem: Column {
        SearchLine {
            id: line
            objectName: "floatingLine"
            width: parent.width
            height: 48
            leftPadding: 40
            focus: true
            search: panel.search
            font.pixelSize: Theme.body
            onEscaped: panel.close()
            background: Item {}
            function takeFocus() { forceActiveFocus(); selectAll() }
        }
        Rectangle { visible: content.implicitHeight > 12; width: parent.width; height: 1; color: Theme.line }
        SearchResults {
            id: content
            width: parent.width
            search: panel.search
            maximumHeight: panel.parent ? panel.parent.height * 0.8 - 110 : 400
            onCleared: line.takeFocus()
        }
    }
    Connections {
        target: panel.search
        function onOpened() { panel.close() }
    }
}
