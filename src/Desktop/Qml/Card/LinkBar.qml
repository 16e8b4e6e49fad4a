import QtQuick
import QtQuick.Controls.Basic
import Nomely

// The links of a body: in a row of words, or each on a card of its own with its host.
Flow {
    id: bar
    required property memoHandle memo
    property bool asCards: false
    signal opened(string address)
    visible: links.count > 0
    spacing: asCards ? 8 : 14
    BodyLinks {
        id: links
        memo: bar.memo
    }
    Repeater {
        model: links
        AbstractButton {
            id: link
            required property string address
            required property string title
            required property string host
            implicitWidth: Math.min(words.implicitWidth + 2 * inset, bar.width)
            implicitHeight: words.implicitHeight + inset
            readonly property int inset: bar.asCards ? 12 : 0
            focusPolicy: Qt.TabFocus
            Accessible.role: Accessible.Link
            Accessible.name: title
            Accessible.description: address
            onClicked: bar.opened(address)
            Keys.onReturnPressed: clicked()
            Keys.onEnterPressed: clicked()
            background: Rectangle {
                radius: 8
                color: bar.asCards ? Theme.sunken : "transparent"
                border { width: bar.asCards ? 1 : 0; color: link.hovered ? Theme.lineStrong : Theme.line }
                FocusRing { target: link }
            }
            contentItem: Item {
                Row {
                    id: words
                    x: link.inset
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: 6
                    Icon { anchors.verticalCenter: parent.verticalCenter; name: "link"; size: 14; tint: Theme.text3 }
                    Text { anchors.verticalCenter: parent.verticalCenter; width: Math.min(implicitWidth, 220); elide: Text.ElideRight; textFormat: Text.PlainText; text: link.title; color: Theme.link; font { family: Theme.sans; pixelSize: Theme.normal; underline: link.hovered } }
                    Text { visible: bar.asCards && link.host !== link.title; anchors.verticalCenter: parent.verticalCenter; width: Math.min(implicitWidth, 160); elide: Text.ElideRight; textFormat: Text.PlainText; text: link.host; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
                }
            }
            HoverHandler { cursorShape: Qt.PointingHandCursor }
            Loader { active: link.hovered; sourceComponent: AddressHint { parent: link; address: link.address } }
        }
    }
}
