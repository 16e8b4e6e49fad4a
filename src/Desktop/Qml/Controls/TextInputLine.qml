import QtQuick
import QtQuick.Controls.Basic
import Nomely

TextField {
    id: field
    property string label
    implicitHeight: 34
    leftPadding: 12
    rightPadding: 12
    color: Theme.text
    placeholderTextColor: Theme.text3
    selectionColor: Theme.selection
    selectedTextColor: Theme.text
    selectByMouse: true
    font { family: Theme.sans; pixelSize: Theme.normal }
    Accessible.role: Accessible.EditableText
    Accessible.name: label || placeholderText
    background: Rectangle {
        radius: 8
        color: Theme.card
        border { width: field.activeFocus ? 2 : 1; color: field.activeFocus ? Theme.accent : Theme.lineStrong }
    }
}
