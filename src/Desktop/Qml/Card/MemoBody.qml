import QtQuick
import Nomely

// A memo's body on its card, folded where it is long, with its links below.
BodySelection {
    id: body
    property string keyword
    property bool expanded: false
    property bool linksAsCards: false
    signal ticked(int line)
    signal linkActivated(string address)
    signal expandAsked(bool expanded)
    signal openLong()
    readonly property bool collapses: blocks.collapses
    readonly property bool isTooLong: blocks.isTooLong
    implicitHeight: column.implicitHeight

    BodyBlocks {
        id: blocks
        memo: body.memo
        expanded: body.expanded
    }
    Column {
        id: column
        width: body.width
        Repeater {
            model: blocks
            BodyPart {
                width: column.width
                selection: body
                keyword: body.keyword
                onTicked: line => body.ticked(line)
                onOpened: address => body.linkActivated(address)
            }
        }
        LinkButton {
            objectName: "unfold"
            visible: blocks.collapses
            topPadding: 6
            text: blocks.isTooLong ? qsTr("打开全文") : body.expanded ? qsTr("收起") : qsTr("展开全文")
            onClicked: blocks.isTooLong ? body.openLong() : body.expandAsked(!body.expanded)
        }
        LinkBar {
            width: column.width
            topPadding: 8
            memo: body.memo
            asCards: body.linksAsCards
            onOpened: address => body.linkActivated(address)
        }
    }
}
