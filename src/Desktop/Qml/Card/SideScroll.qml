import QtQuick
import QtQuick.Controls.Basic
import Nomely

// Lets wide contents be moved sideways, and nothing else: the wheel goes on to the page.
Flickable {
    id: area
    contentHeight: height
    clip: contentWidth > width
    interactive: contentWidth > width
    flickableDirection: Flickable.HorizontalFlick
    boundsBehavior: Flickable.StopAtBounds
    ScrollBar.horizontal: FlatScrollBar { visible: area.interactive }
}
