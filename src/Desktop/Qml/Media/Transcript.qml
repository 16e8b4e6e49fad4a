import QtQuick
import Nomely

// What was said in a sound. The word that is heard is marked; a click goes to another.
Item {
    id: transcript
    required property SpokenText spoken
    signal wordChosen(real second)
    implicitHeight: words.implicitHeight + 14
    TextEdit {
        id: words
        objectName: "soundText"
        x: 14
        width: parent.width - 28
        readOnly: true
        selectByMouse: false
        activeFocusOnPress: false
        persistentSelection: true
        wrapMode: TextEdit.Wrap
        text: transcript.spoken.text
        color: Theme.text2
        selectionColor: Theme.mark
        selectedTextColor: Theme.markText
        font { family: Theme.sans; pixelSize: Theme.body - 1 }
        Accessible.role: Accessible.StaticText
        Accessible.name: text
        Component.onCompleted: select(transcript.spoken.begin, transcript.spoken.end)
        HoverHandler { cursorShape: Qt.PointingHandCursor }
        TapHandler { onTapped: point => transcript.wordChosen(transcript.spoken.secondOf(words.positionAt(point.position.x, point.position.y))) }
    }
    Connections {
        target: transcript.spoken
        function onWordChanged() { words.select(transcript.spoken.begin, transcript.spoken.end) }
    }
}
