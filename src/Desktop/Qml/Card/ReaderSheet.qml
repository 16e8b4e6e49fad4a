import QtQuick
import Nomely

// A memo that is too long for its card.
Sheet {
    id: sheet
    required property DesktopScreens screens
    readonly property memoHandle memo: screens.cards.reading
    title: Qt.formatDate(memo.date, qsTr("yyyy年M月d日")) + " " + memo.time
    visible: memo.isValid
    width: Math.min(parent ? parent.width - 32 : 720, 760)
    height: parent ? parent.height - 48 : 600
    onClosed: screens.cards.stopReading()
    contentItem: Item {
        Text { id: heading; text: sheet.title; color: Theme.text; font { family: Theme.serif; pixelSize: Theme.heading; bold: true } }
        IconButton { objectName: "closeReader"; anchors.right: parent.right; y: -6; glyph: "close"; hint: qsTr("关闭"); onClicked: sheet.close() }
        LongBody {
            objectName: "reader"
            anchors { fill: parent; topMargin: heading.height + 16 }
            memo: sheet.memo
            onTicked: line => {
                sheet.screens.cards.tick(sheet.memo, line)
                sheet.screens.cards.read(sheet.screens.timeline.model.at(sheet.screens.timeline.model.rowOf(sheet.memo.key)))
            }
            onLinkActivated: address => sheet.screens.cards.openLink(address)
        }
    }
}
