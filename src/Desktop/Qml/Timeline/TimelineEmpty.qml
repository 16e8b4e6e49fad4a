import QtQuick
import Nomely

EmptyState {
    required property DesktopScreens screens
    glyph: "all"
    text: qsTr("这里还没有笔记")
}
