import QtQuick
import Nomely

// What can be done with an attachment.
ContextMenu {
    id: menu
    required property MediaScreen media
    property string path
    property string name
    property bool isPicture: false
    MenuRow { objectName: "attachmentOpen"; glyph: "external"; text: qsTr("用其他程序打开"); onTriggered: menu.media.open(menu.path) }
    MenuRow { objectName: "attachmentCopy"; visible: menu.isPicture; glyph: "copy"; text: qsTr("复制图片"); onTriggered: menu.media.copyPicture(menu.path) }
    MenuRow { objectName: "attachmentSave"; glyph: "save"; text: qsTr("另存为…"); onTriggered: menu.media.askToSave(menu.path, menu.name) }
    MenuRow { objectName: "attachmentFolder"; glyph: "folder"; text: qsTr("打开所在文件夹"); onTriggered: menu.media.showInFolder(menu.path) }
}
