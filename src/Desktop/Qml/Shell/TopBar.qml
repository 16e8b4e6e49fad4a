import QtQuick
import Nomely

Item {
    id: bar
    required property DesktopScreens screens
    property bool narrow: false
    readonly property int edge: narrow ? 8 : Math.max(24, (width - Theme.column) / 2)
    signal sidebarAsked()
    signal searchAsked()
    signal searchLeft()
    height: narrow ? 52 : 68
    Row {
        x: bar.edge
        anchors.verticalCenter: parent.verticalCenter
        spacing: 12
        IconButton { objectName: "sidebarButton"; visible: bar.narrow; anchors.verticalCenter: parent.verticalCenter; glyph: "menu"; hint: qsTr("侧栏") + "  Ctrl+\\"; onClicked: bar.sidebarAsked() }
        Text { id: title; objectName: "title"; anchors.verticalCenter: parent.verticalCenter; text: bar.screens.timeline.title; color: Theme.text; elide: Text.ElideRight; width: Math.min(implicitWidth, bar.width * 0.5); font { family: Theme.serif; pixelSize: bar.narrow ? Theme.heading : Theme.title; bold: true } Accessible.role: Accessible.Heading; Accessible.name: text }
        Text { objectName: "counts"; visible: !bar.narrow; anchors.baseline: title.baseline; text: bar.screens.timeline.counts; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
    }
    SearchField { id: search; visible: !bar.narrow; anchors { right: parent.right; rightMargin: bar.edge; verticalCenter: parent.verticalCenter } search: bar.screens.search; onEscaped: bar.searchLeft() }
    IconButton { objectName: "searchButton"; visible: bar.narrow; anchors { right: parent.right; rightMargin: 8; verticalCenter: parent.verticalCenter } glyph: "search"; hint: qsTr("搜索") + "  Ctrl+F"; onClicked: bar.searchAsked() }
    function takeSearch() { search.takeFocus() }
}
