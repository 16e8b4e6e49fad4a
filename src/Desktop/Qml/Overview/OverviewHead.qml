import QtQuick
import Nomely

// The month's figures and how they spread over its days.
Column {
    id: head
    required property OverviewScreen overview
    property bool narrow: false
    spacing: 20
    topPadding: 4

    component Figure: Item {
        id: figure
        property string value
        property string name
        property bool isFirst: false
        width: head.width / figures.columns
        height: 64
        Accessible.role: Accessible.StaticText
        Accessible.name: name + " " + value
        Rectangle { visible: !figure.isFirst; y: 10; width: 1; height: 40; color: Theme.line }
        Text { x: figure.isFirst ? 2 : 18; y: 4; width: parent.width - x; fontSizeMode: Text.HorizontalFit; minimumPixelSize: 15; text: figure.value; color: Theme.text; font { family: Theme.serif; pixelSize: head.narrow ? 22 : 27; bold: true } }
        Text { x: figure.isFirst ? 2 : 18; anchors { bottom: parent.bottom; bottomMargin: 6 } text: figure.name; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
    }
    Grid {
        id: figures
        width: parent.width
        columns: head.narrow ? 3 : 5
        rowSpacing: 8
        Figure { objectName: "figureMemos"; isFirst: true; value: head.overview.memos; name: qsTr("条笔记") }
        Figure { objectName: "figureDays"; value: head.overview.days; name: qsTr("天有记录") }
        Figure { objectName: "figureWords"; value: head.overview.words; name: qsTr("字") }
        Figure { objectName: "figureAttachments"; isFirst: head.narrow; value: head.overview.attachments; name: qsTr("个附件") }
        Figure { objectName: "figureAudio"; value: head.overview.audio; name: qsTr("段录音") }
    }
    MonthBars { width: parent.width; overview: head.overview }
    Column {
        width: parent.width
        bottomPadding: 8
        spacing: 2
        Text { text: qsTr("线索"); color: Theme.text; font { family: Theme.serif; pixelSize: 15; bold: true } Accessible.role: Accessible.Heading; Accessible.name: text }
        Text { width: parent.width; wrapMode: Text.Wrap; text: head.overview.threads.count > 0 ? qsTr("写过不止一天的标签，点开看是哪些") : qsTr("还没有写过不止一天的标签"); color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
    }
}
