import QtQuick
import QtQuick.Controls.Basic
import Nomely

// All keys on one page.
Sheet {
    id: sheet
    title: qsTr("键盘")
    width: Math.min(parent ? parent.width - 32 : 720, 720)
    height: Math.min(parent ? parent.height - 32 : 600, body.implicitHeight + 96)
    component Group: Column {
        id: group
        property string name
        default property alias rows: rowColumn.data
        width: Math.floor((flow.width - flow.spacing) / (sheet.width < 560 ? 1 : 2))
        spacing: 6
        bottomPadding: 10
        Text { text: group.name; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.tiny; letterSpacing: 2 } }
        Column { id: rowColumn; width: parent.width; spacing: 4 }
    }
    component KeyRow: Item {
        id: row
        property string keys
        property string what
        width: parent ? parent.width : 0
        implicitHeight: Math.max(22, said.implicitHeight + 2)
        Accessible.role: Accessible.StaticText
        Accessible.name: keys + "，" + what
        Text { y: 2; text: row.keys; color: Theme.text; font { family: Theme.mono; pixelSize: Theme.small } }
        Text { id: said; x: 152; width: parent.width - x; text: row.what; wrapMode: Text.Wrap; color: Theme.text2; font { family: Theme.sans; pixelSize: Theme.normal } }
    }
    contentItem: Item {
        Text { id: heading; text: sheet.title; color: Theme.text; font { family: Theme.serif; pixelSize: Theme.heading; bold: true } }
        Flickable {
            id: body
            anchors { fill: parent; topMargin: 40 }
            implicitHeight: flow.implicitHeight
            contentHeight: flow.implicitHeight
            clip: true
            focus: true
            boundsBehavior: Flickable.StopAtBounds
            ScrollBar.vertical: FlatScrollBar {}
            Keys.onDownPressed: flick(0, -800)
            Keys.onUpPressed: flick(0, 800)
            Flow {
                id: flow
                width: parent.width - 10
                spacing: 20
                Group {
                    name: qsTr("到处都行")
                    KeyRow { keys: "Ctrl+N"; what: qsTr("写一条") }
                    KeyRow { keys: "Ctrl+F"; what: qsTr("搜索") }
                    KeyRow { keys: "Ctrl+P"; what: qsTr("浮动搜索") }
                    KeyRow { keys: "Ctrl+1 … 4"; what: qsTr("全部、今天、置顶、那年今日") }
                    KeyRow { keys: "Alt+← →"; what: qsTr("前一天、后一天") }
                    KeyRow { keys: "Ctrl+\\"; what: qsTr("侧栏") }
                    KeyRow { keys: "Ctrl+Z"; what: qsTr("撤销删除（不在写字时）") }
                    KeyRow { keys: "F6"; what: qsTr("下一个区域") }
                    KeyRow { keys: "Ctrl+,"; what: qsTr("设置") }
                    KeyRow { keys: "Esc"; what: qsTr("返回") }
                }
                Group {
                    name: qsTr("卡片")
                    KeyRow { keys: "J K ↑ ↓"; what: qsTr("下一张、上一张") }
                    KeyRow { keys: "Enter"; what: qsTr("编辑") }
                    KeyRow { keys: "Space"; what: qsTr("展开、收起") }
                    KeyRow { keys: "P"; what: qsTr("置顶") }
                    KeyRow { keys: "Shift+P"; what: qsTr("固定在最上面") }
                    KeyRow { keys: "Ctrl+C"; what: qsTr("复制选中的文字，或整条的 Markdown") }
                    KeyRow { keys: "Delete"; what: qsTr("删除") }
                    KeyRow { keys: "Menu  Shift+F10"; what: qsTr("所有操作") }
                }
                Group {
                    name: qsTr("写字")
                    KeyRow { keys: "Ctrl+Enter"; what: qsTr("记录") }
                    KeyRow { keys: "Ctrl+S"; what: qsTr("保存（专注编辑）") }
                    KeyRow { keys: "Ctrl+E"; what: qsTr("专注编辑") }
                    KeyRow { keys: "Ctrl+B  Ctrl+I"; what: qsTr("粗体、斜体") }
                    KeyRow { keys: "Ctrl+K  Ctrl+`"; what: qsTr("链接、代码") }
                    KeyRow { keys: "Ctrl+Alt+1 2 3"; what: qsTr("标题") }
                    KeyRow { keys: "Ctrl+Alt+7 8"; what: qsTr("编号、列表") }
                    KeyRow { keys: "Tab  Shift+Tab"; what: qsTr("缩进") }
                    KeyRow { keys: "#"; what: qsTr("补全标签") }
                }
            }
        }
    }
}
