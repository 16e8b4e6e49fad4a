import QtQuick
import Nomely

// A screen's question: open while there is one.
ConfirmDialog {
    id: dialog
    property question question
    signal dismissed()
    objectName: "question"
    title: question.title
    text: question.text
    confirmText: question.confirmText
    destructive: question.isDestructive
    visible: question.isAsked
    onAboutToHide: if (question.isAsked) dismissed()
}
