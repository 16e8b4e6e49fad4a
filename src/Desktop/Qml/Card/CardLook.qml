pragma Singleton
import Nomely

// How bodies look, from the window's theme.
BodyLook {
    text: Theme.text
    quoteText: Theme.text2
    doneText: Theme.text3
    markerText: Theme.text3
    tag: Theme.accent
    link: Theme.link
    ground: Theme.card
    codeGround: Theme.sunken
    hitGround: Theme.mark
    hitText: Theme.markText
    sans: Theme.sans
    serif: Theme.serif
    mono: Theme.mono
    size: Theme.body
    lineHeight: Theme.lineHeight
}
