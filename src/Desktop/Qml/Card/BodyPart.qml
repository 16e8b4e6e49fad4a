import QtQuick
import Nomely

// One segment of a body, as the item that its kind asks for.
Item {
    id: part
    required property int index
    required property int kind
    required property bodySegment segment
    required property bool standsClose
    required property BodySelection selection
    property string keyword
    signal ticked(int line)
    signal opened(string address)
    // Whole: the renderer drops the thin lines through and under a text at some fractions of a pixel.
    implicitHeight: Math.ceil(loader.y + loader.height)

    Loader {
        id: loader
        y: part.index === 0 ? 0 : part.standsClose ? 3 : 10
        width: part.width
        sourceComponent: [run, codeView, callout, table, diagram, rule][part.kind]
    }
    Component { id: run; TextRun { segment: part.segment; selection: part.selection; keyword: part.keyword; onTicked: line => part.ticked(line); onOpened: address => part.opened(address) } }
    Component { id: codeView; CodeBlock { segment: part.segment; selection: part.selection; keyword: part.keyword } }
    Component { id: callout; CalloutBlock { segment: part.segment; selection: part.selection; keyword: part.keyword; onOpened: address => part.opened(address) } }
    Component { id: table; TableBlock { segment: part.segment; selection: part.selection; keyword: part.keyword; onOpened: address => part.opened(address) } }
    Component { id: diagram; MermaidBlock { code: part.segment.code; sourceView: codeView } }
    Component { id: rule; RuleBlock {} }
}
