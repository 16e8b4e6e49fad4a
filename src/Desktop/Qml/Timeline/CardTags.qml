import QtQuick
import Nomely

Flow {
    id: tags
    required property memoHandle memo
    required property DesktopScreens screens
    visible: memo.tags.length > 0
    spacing: 6
    topPadding: 2
    Repeater {
        model: tags.memo.tags
        Chip {
            required property string modelData
            text: modelData
            onClicked: tags.screens.timeline.showTag(modelData)
        }
    }
}
