import QtQuick
import QtQuick.Controls.Basic
import Nomely

// The palette of a tag's menu; the first takes the colour away. Left and Right choose.
MenuItem {
    id: colors
    property string chosen
    property int at: -1
    signal picked(string value)
    implicitHeight: 34
    Accessible.role: Accessible.MenuItem
    Accessible.name: qsTr("颜色")
    indicator: Item {}
    background: Rectangle { radius: 6; color: colors.highlighted ? Theme.hover : "transparent" }
    component Swatch: AbstractButton {
        id: swatch
        required property int place
        property color fill: "transparent"
        width: 18
        height: 34
        focusPolicy: Qt.NoFocus
        Accessible.role: Accessible.Button
        Accessible.name: text
        contentItem: Item {
            Rectangle { anchors.centerIn: parent; width: 14; height: 14; radius: 7; color: swatch.fill; border { width: swatch.place < 0 ? 1 : 0; color: Theme.outline } }
            Rectangle { anchors.centerIn: parent; visible: swatch.checked || swatch.hovered || colors.highlighted && colors.at === swatch.place; width: 18; height: 18; radius: 9; color: "transparent"; border { width: swatch.checked ? 2 : 1; color: Theme.text2 } }
        }
    }
    contentItem: Row {
        leftPadding: 2
        Swatch { objectName: "noColor"; place: -1; text: qsTr("不要颜色"); checked: !colors.chosen; onClicked: colors.picked("") }
        Repeater {
            model: Theme.tagColors
            Swatch {
                required property string modelData
                required property int index
                objectName: "tagColor"
                place: index
                fill: modelData
                text: qsTr("颜色 %1").arg(index + 1)
                checked: colors.chosen === modelData
                onClicked: colors.picked(modelData)
            }
        }
    }
    Keys.onLeftPressed: at = Math.max(-1, at - 1)
    Keys.onRightPressed: at = Math.min(Theme.tagColors.length - 1, at + 1)
    onTriggered: picked(at < 0 ? "" : Theme.tagColors[at])
}
