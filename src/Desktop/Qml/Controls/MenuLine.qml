import QtQuick
import QtQuick.Controls.Basic
import Nomely

MenuSeparator {
    padding: 4
    contentItem: Rectangle { implicitHeight: 1; color: Theme.line }
}
