import QtQuick
import Nomely

// What stands where nothing is: one sentence, and one thing to do about it.
Column {
    id: empty
    property string glyph
    property string text
    property string note
    property string actionText
    signal triggered()
    spacing: 12
    width: Math.min(parent ? parent.width - 48 : 320, 360)
    Icon { visible: empty.glyph; anchors.horizontalCenter: parent.horizontalCenter; name: empty.glyph; size: 34; weight: 1.2; tint: Theme.outline }
    Text { width: parent.width; horizontalAlignment: Text.AlignHCenter; wrapMode: Text.Wrap; text: empty.text; color: Theme.text2; font { family: Theme.serif; pixelSize: 15 } Accessible.role: Accessible.StaticText; Accessible.name: text }
    Text { visible: text; width: parent.width; horizontalAlignment: Text.AlignHCenter; wrapMode: Text.Wrap; text: empty.note; color: Theme.text3; font { family: Theme.sans; pixelSize: Theme.small } }
    LinkButton { objectName: "emptyAction"; visible: text; anchors.horizontalCenter: parent.horizontalCenter; text: empty.actionText; onClicked: empty.triggered() }
}
