#include "Desktop/Pictures/IconProvider.h"

#include <QBuffer>
#include <QImageReader>
#include <QStringList>
#include <algorithm>
#include <string_view>

namespace nomely {
namespace {

struct Glyph {
  std::string_view name;
  const char* path;  // of SVG
};

// By name.
constexpr Glyph glyphs[]{
    {"all", "M4 6h16M4 12h16M4 18h10"},
    {"archivebox", "M4 5h16v4H4zM5.500 9v10h13V9M10 13h4"},
    {"bold", "M7 5h6a3.500 3.500 0 0 1 0 7H7zM7 12h7a3.500 3.500 0 0 1 0 7H7z"},
    {"book",
     "M5 5.500A2.500 2.500 0 0 1 7.500 4H19v13H7.500A2.500 2.500 0 0 0 5 19.500zM5 19.500A2 2 0 0 "
     "0 7 21h12v-4"},
    {"brain.head.profile",
     "M12 5a3 3 0 0 0-5.500 1.500A3.500 3.500 0 0 0 5 13a3.500 3.500 0 0 0 4 5.500A2.500 2.500 0 0 "
     "0 12 "
     "18zM12 5a3 3 0 0 1 5.500 1.500A3.500 3.500 0 0 1 19 13a3.500 3.500 0 0 1-4 5.500A2.500 2.500 "
     "0 0 1 12 "
     "18z"},
    {"calendar", "M5 5h14v15H5zM5 10h14M9 3v4M15 3v4"},
    {"chart", "M5 19V11M10 19V6M15 19v-5M20 19V9"},
    {"chat", "M4 5h16v11H11l-4 4v-4H4z"},
    {"check", "M5 5h14v14H5zM8.500 12l2.500 2.500 4.500-5"},
    {"clip",
     "M19 11.500l-7.500 7.500a4.500 4.500 0 0 1-6.400-6.400L13 4.700a3 3 0 0 1 4.300 4.300l-7.700 "
     "7.700a1.500 1.500 0 0 1-2.200-2.200L14.500 7.500"},
    {"close", "M6.500 6.500l11 11M17.500 6.500l-11 11"},
    {"code", "M8.500 8L4 12l4.500 4M15.500 8l4.500 4-4.500 4"},
    {"copy", "M8 8h12v12H8zM16 8V4H4v12h4"},
    {"doc", "M6 3.500h8l4 4.500v12.500H6zM14 3.500V8h4"},
    {"doc.plaintext", "M6 3.500h8l4 4.500v12.500H6zM9 12h6M9 15.500h4"},
    {"doc.richtext",
     "M6 3.500h8l4 4.500v12.500H6zM14 3.500V8h4M9 17l2.500-5 1.500 3 1-1.500 1.500 3.500"},
    {"doc.text", "M6 3.500h8l4 4.500v12.500H6zM14 3.500V8h4M9 12h6M9 15h6M9 18h4"},
    {"down", "M6 9.500l6 5.500 6-5.500"},
    {"edit", "M5 19h3.500L19 8.500 15.500 5 5 15.500zM13 7.500l3.500 3.500"},
    {"expand", "M14 5h5v5M10 19H5v-5M19 5l-6 6M5 19l6-6"},
    {"external", "M14 4h6v6M20 4l-9 9M11 5H5v14h14v-6"},
    {"file", "M6 3.500h8l4 4.500v12.500H6zM14 3.500V8h4"},
    {"filter", "M4 5h16l-6 7.500V19l-4-2v-4.500z"},
    {"folder", "M4 6h6l2 2.5h8V19H4z"},
    {"gear",
     "M12 9a3 3 0 1 0 0 6 3 3 0 0 0 0-6zM12 3.500v3M12 17.500v3M3.500 12h3M17.500 12h3M6 6l2.100 "
     "2.100M15.900 15.900L18 18M18 6l-2.100 2.100M8.100 15.900L6 18"},
    {"hash", "M9.500 4L7.500 20M16.500 4l-2 16M4.500 9h16M3.500 15h16"},
    {"heading", "M6 5v14M18 5v14M6 12h12"},
    {"history", "M4 12a8 8 0 1 0 2.6-5.9M4 4v4h4M12 8v4.5l3 2"},
    {"image", "M4 5h16v14H4zM4 16l5-5 4 4 2.5-2.5L20 17M9 9.2v.1"},
    {"indent", "M4 6h16M11 12h9M11 18h9M4 10.500l3.500 3L4 16.500"},
    {"italic", "M10 5h7M7 19h7M14 5l-4 14"},
    {"key", "M8 8.500a4 4 0 1 0 0 7 4 4 0 0 0 3.700-2.500H20v3M16.500 13v2"},
    {"left", "M14.500 6L9 12l5.500 6"},
    {"link",
     "M10 14a4 4 0 0 0 5.7 0l3-3A4 4 0 0 0 13 5.300l-1 1M14 10a4 4 0 0 0-5.700 0l-3 3A4 4 0 0 0 11 "
     "18.700l1-1"},
    {"list", "M9 6h11M9 12h11M9 18h11M4.500 6v.1M4.500 12v.1M4.500 18v.1"},
    {"lock", "M6 11h12v9H6zM8.5 11V8a3.5 3.5 0 0 1 7 0v3"},
    {"menu", "M4 7h16M4 12h16M4 17h16"},
    {"merge", "M6 4v5c0 3 6 3 6 6v5M18 4v5c0 3-6 3-6 6M9 17l3 3 3-3"},
    {"mic",
     "M12 4a3 3 0 0 1 3 3v5a3 3 0 0 1-6 0V7a3 3 0 0 1 3-3zM6 11.500a6 6 0 0 0 12 0M12 17.500V21"},
    {"minus", "M5 12h14"},
    {"more", "M6 12h.1M12 12h.1M18 12h.1"},
    {"numbers", "M10 6h10M10 12h10M10 18h10M4 4.500h1.500V9M4 14h3l-3 5h3"},
    {"palette",
     "M12 4a8 8 0 1 0 0 16c2 0 1.500-2 1-3s.5-2.500 2-2.500h2.500A2.500 2.500 0 0 0 20 12a8 8 0 0 "
     "0-8-8zM8 11v.1M11 8v.1M15 8.500v.1"},
    {"pause", "M8 5.500v13M16 5.500v13"},
    {"pin", "M9 4h6l-1 6 3 3H7l3-3zM12 13v7"},
    {"play", "M8 5.500l11 6.500-11 6.500z"},
    {"play.rectangle", "M4 5.500h16v13H4zM10 9l5 3-5 3z"},
    {"plus", "M12 5v14M5 12h14"},
    {"quote", "M6 17h3l1.500-4V7H5v6h3zM15 17h3l1.500-4V7H14v6h3z"},
    {"rectangle.on.rectangle", "M8 9h12v10H8zM16 9V5H4v10h4"},
    {"right", "M9.500 6l5.500 6-5.500 6"},
    {"save", "M5 5h11l3 3v11H5zM8 5v5h7V5M8 19v-6h8v6"},
    {"search", "M11 5a6 6 0 1 0 0 12 6 6 0 0 0 0-12zM15.500 15.500L20 20"},
    {"send", "M12 19V6M6.500 11L12 5.500 17.500 11"},
    {"smile",
     "M12 4a8 8 0 1 0 0 16 8 8 0 0 0 0-16zM8.500 14a4 4 0 0 0 7 0M9.300 9.500v.4M14.700 9.500v.4"},
    {"spark",
     "M11 4l1.800 5.200L18 11l-5.200 1.800L11 18l-1.800-5.200L4 11l5.200-1.800zM18.500 15v5M16 "
     "17.500h5"},
    {"speed", "M4 17a8.500 8.500 0 1 1 16 0M12 15l4-5"},
    {"star",
     "M12 4l2.400 5.200 5.600.7-4.100 3.900 1.100 5.600-5-2.800-5 2.800 1.100-5.600L4 "
     "9.900l5.600-.7z"},
    {"strike",
     "M5 12h14M8 8a3.500 3.500 0 0 1 4-3c2.500 0 4 1.300 4 3M16 16c0 1.800-1.500 3-4 "
     "3s-4-1.200-4-3"},
    {"tablecells", "M4 5h16v14H4zM4 10h16M4 14.500h16M10 5v14"},
    {"tick", "M5 12.5l4.5 4.5L19 7.5"},
    {"today", "M5 5h14v15H5zM5 10h14M9 3v4M15 3v4M12 14v2.5"},
    {"trash", "M5 7h14M10 7V4.500h4V7M7 7l.8 13h8.400L17 7M10.500 11v5.500M13.500 11v5.500"},
    {"undo", "M8 6L4 10l4 4M4 10h10a5 5 0 0 1 0 10h-3"},
    {"untag", "M4 4h7l9 9-7 7-9-9zM8 8v.1M4 20L20 4"},
    {"up", "M6 14.5l6-5 6 5"},
    {"warn", "M12 4l9 16H3zM12 10v4.500M12 17.500v.1"},
    {"waveform", "M4 10.500v3M8 7v10M12 4v16M16 8v8M20 10.500v3"},
};

const char* pathOf(const QString& name) {
  const QByteArray wanted = name.toUtf8();
  const auto* const found =
      std::ranges::lower_bound(glyphs, std::string_view(wanted.constData()), {}, &Glyph::name);
  return found != std::end(glyphs) && found->name == wanted.constData() ? found->path : "";
}

}  // namespace

QImage IconProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize) {
  const QStringList parts = id.split(QLatin1Char('/'));
  const QSize wanted = requestedSize.isEmpty() ? QSize(24, 24) : requestedSize;
  QByteArray svg =
      QStringLiteral(
          "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 24 24' fill='none' stroke='#%2' "
          "stroke-width='%3' stroke-linecap='round' stroke-linejoin='round'><path d='%1'/></svg>")
          .arg(QLatin1String(pathOf(parts.value(0))), parts.value(1), parts.value(2))
          .toUtf8();
  QBuffer bytes(&svg);
  QImageReader reader(&bytes, "svg");
  reader.setScaledSize(wanted);
  QImage image = reader.read();
  if (size) *size = wanted;
  return image;
}

}  // namespace nomely
