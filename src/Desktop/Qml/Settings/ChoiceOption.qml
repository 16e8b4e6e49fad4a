import QtQuick
import QtQuick.Controls.Basic
import Nomely

AbstractButton {
    id: option
    property string group
    implicitHeight: 28
    implicitWidth: label.implicitWidth + 22
    focusPolicy: Qt.TabFocus
    Accessible.role: Accessible.RadioButton
    Accessible.name: group + "：" + text
    Accessible.checked: checked
    background: Rectangle {
        radius: 7
        color: option.checked ? Theme.raised : option.hovered ? Theme.hover : "transparent"
        border { width: option.checked ? 1 : 0; color: Theme.lineStrong }
        FocusRing { target: option; radius: 9 }
    }
    contentItem: Text { id: label; text: option.text; color: option.checked ? Theme.text : Theme.text2; horizontalAlignment: Text.AlignHCenter; verticalAlignment: Text.AlignVCenter; font { family: Theme.sans; pixelSize: Theme.normal; bold: option.checked } }
    Keys.onReturnPressed: clicked()
}
