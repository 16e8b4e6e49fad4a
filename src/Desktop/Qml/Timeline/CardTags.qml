import QtQuick
import Nomely

Flow {
    id: tags
    required property memoHandle memo
    required property DesktopScreens screens
    readonly property tagStyles styles: screens.sidebar.tagStyles
    visible: memo.tags.length > 0
    spacing: 6
    topPadding: 2
    Repeater {
        model: tags.memo.tags
        Chip {
            required property string modelData
            text: modelData
            emoji: tags.styles.emojiOf(modelData)
            tint: tags.styles.colorOf(modelData) || Theme.lineStrong
            onClicked: tags.screens.timeline.showTag(modelData)
        }
    }
}
