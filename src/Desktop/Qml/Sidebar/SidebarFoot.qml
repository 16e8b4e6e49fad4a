import QtQuick
import Nomely

// The ways to the other pages.
Rectangle {
    id: foot
    required property Navigation navigation
    signal chosen()
    height: 52
    color: Theme.sidebar
    Accessible.role: Accessible.ToolBar
    Accessible.name: qsTr("其他页面")
    Rectangle { width: parent.width; height: 1; color: Theme.line }
    component PageButton: IconButton {
        required property int page
        checked: foot.navigation.page === page
        onClicked: { foot.navigation.show(page); foot.chosen() }
    }
    Row {
        anchors.centerIn: parent
        spacing: 26
        PageButton { objectName: "pageOverview"; page: Navigation.Overview; glyph: "chart"; hint: qsTr("月度总览") }
        PageButton { objectName: "pageTrash"; page: Navigation.Trash; glyph: "trash"; hint: qsTr("回收站") }
        PageButton { objectName: "pageSettings"; page: Navigation.Settings; glyph: "gear"; hint: qsTr("设置") + "  Ctrl+," }
    }
}
