import QtQuick
import Nomely

// A text of a body that can be selected, also together with the others of its body.
TextEdit {
    id: text
    required property BodySelection selection
    property string says
    signal opened(string address)
    readOnly: true
    selectByMouse: true
    persistentSelection: true
    activeFocusOnTab: false
    textFormat: TextEdit.RichText
    wrapMode: TextEdit.Wrap
    color: Theme.text
    selectionColor: Theme.selection
    selectedTextColor: Theme.text
    font { family: Theme.sans; pixelSize: Theme.body }
    Keys.forwardTo: [text.selection]
    onLinkActivated: link => text.opened(link)
    Accessible.role: Accessible.StaticText
    Accessible.name: says
    Accessible.readOnly: true
    HoverHandler { cursorShape: text.hoveredLink ? Qt.PointingHandCursor : Qt.IBeamCursor }
    // Made when it is needed: most texts have no link.
    Loader { active: text.hoveredLink; sourceComponent: AddressHint { parent: text; address: text.hoveredLink } }
}
