import QtQuick
import Nomely

// A text of a body that can be selected, also together with the others of its body.
TextEdit {
    id: run
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
    Keys.forwardTo: [run.selection]
    onLinkActivated: link => run.opened(link)
    Accessible.role: Accessible.StaticText
    Accessible.name: says
    Accessible.readOnly: true
    HoverHandler { cursorShape: run.hoveredLink ? Qt.PointingHandCursor : Qt.IBeamCursor }
    // Made when it is needed: most texts have no link.
    Loader { active: run.hoveredLink; sourceComponent: AddressHint { parent: run; address: run.hoveredLink } }
}
