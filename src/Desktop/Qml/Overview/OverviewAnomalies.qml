import QtQuick
import Nomely

// Notes that look wrong, each with the way to it.
Column {
    id: anomalies
    required property OverviewScreen overview
    property bool narrow: false
    spacing: 8
    topPadding: 24
    bottomPadding: 48

    Text { visible: rows.count > 0; text: qsTr("可能有误"); color: Theme.text; font { family: Theme.serif; pixelSize: 15; bold: true } Accessible.role: Accessible.Heading; Accessible.name: text }
    Repeater {
        id: rows
        model: anomalies.overview.anomalies
        Rectangle {
            id: card
            required property int index
            required property string reason
            required property string when
            required property string preview
            objectName: "anomaly"
            width: anomalies.width
            height: words.height + 24
            radius: Theme.radius
            color: Theme.card
            border { width: 1; color: Theme.line }
            Accessible.role: Accessible.ListItem
            Accessible.name: when + "，" + reason
            Icon { x: 16; y: 14; name: "warn"; size: 17; tint: Theme.warn }
            Column {
                id: words
                x: 44
                y: 12
                width: parent.width - x - look.width - 28
                spacing: 3
                Text { width: parent.width; wrapMode: Text.Wrap; text: card.reason; color: Theme.text; font { family: Theme.sans; pixelSize: Theme.normal } }
                Text { width: parent.width; elide: Text.ElideRight; textFormat: Text.PlainText; text: card.when + "  " + card.preview; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
            }
            PushButton { id: look; objectName: "look"; anchors { right: parent.right; rightMargin: 14; verticalCenter: parent.verticalCenter } text: qsTr("去看看"); Accessible.name: qsTr("去看看") + " " + card.when; onClicked: anomalies.overview.openAnomaly(card.index) }
        }
    }
}
