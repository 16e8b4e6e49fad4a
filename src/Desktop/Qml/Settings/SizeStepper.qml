import QtQuick
import Nomely

// A size in points, a step at a time.
Row {
    id: stepper
    property string label
    property string objectBase
    property real value: 14
    property int least: 10
    property int most: 32
    signal chosen(real value)
    spacing: 4
    IconButton { objectName: stepper.objectBase + "Less"; glyph: "minus"; glyphSize: 14; hint: qsTr("%1小一点").arg(stepper.label); enabled: stepper.value > stepper.least; onClicked: stepper.chosen(stepper.value - 1) }
    Text { objectName: stepper.objectBase; width: 34; height: 32; text: stepper.value; color: Theme.text; horizontalAlignment: Text.AlignHCenter; verticalAlignment: Text.AlignVCenter; font { family: Theme.sans; pixelSize: Theme.normal; bold: true } Accessible.role: Accessible.StaticText; Accessible.name: stepper.label + " " + text }
    IconButton { objectName: stepper.objectBase + "More"; glyph: "plus"; glyphSize: 14; hint: qsTr("%1大一点").arg(stepper.label); enabled: stepper.value < stepper.most; onClicked: stepper.chosen(stepper.value + 1) }
}
