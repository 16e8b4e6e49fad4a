#include "Diagrams/DiagramLook.h"

#include <QJsonArray>
#include <QString>
#include <array>

namespace nomely {
namespace {

struct Look {
  bool isDark;
  const char* card;
  const char* text;
  const char* line;
  const char* accent;
  const char* note;
  const char* noteBorder;
  // Fills that text can stand on: of boxes first, then of branches, slices and sections.
  std::array<const char*, 6> fills;
};

constexpr Look light{false,     "#FFFEFB",
                     "#26231E", "#6E675B",
                     "#A8452B", "#FBF3D9",
                     "#948B79", {"#F5E3D9", "#DCE8F2", "#E2EEDC", "#F6EAC8", "#E9DFEF", "#D9EAE8"}};
constexpr Look dark{true,      "#242220",
                    "#DDD7CB", "#9A9284",
                    "#E8906F", "#3A3223",
                    "#807869", {"#4A2F22", "#25394A", "#2E4229", "#4A3D1C", "#41304C", "#214442"}};

QJsonObject chartLook(const Look& look) {
  QJsonObject chart{{"backgroundColor", look.card},
                    {"titleColor", look.text},
                    {"plotColorPalette", QString("%1,%2").arg(look.accent, look.line)}};
  for (const char* name :
       {"xAxisLabelColor", "xAxisTitleColor", "xAxisTickColor", "xAxisLineColor", "yAxisLabelColor",
        "yAxisTitleColor", "yAxisTickColor", "yAxisLineColor"})
    chart[name] = look.line;
  return chart;
}

}  // namespace

QJsonObject diagramLook(bool isDark) {
  const Look& look = isDark ? dark : light;
  QJsonObject variables{
      {"darkMode", look.isDark},
      {"background", look.card},
      {"primaryColor", look.fills[0]},
      {"primaryTextColor", look.text},
      {"primaryBorderColor", look.accent},
      {"secondaryColor", look.fills[1]},
      {"secondaryTextColor", look.text},
      {"tertiaryColor", look.fills[2]},
      {"tertiaryTextColor", look.text},
      {"lineColor", look.line},
      {"gridColor", look.line},
      {"textColor", look.text},
      {"edgeLabelBackground", look.card},
      {"noteBkgColor", look.note},
      {"noteTextColor", look.text},
      {"noteBorderColor", look.noteBorder},
      {"pieStrokeColor", look.card},
      {"pieOuterStrokeColor", look.card},
      {"pieOpacity", "1"},
      {"pieTitleTextSize", "17px"},
      {"pieSectionTextSize", "14px"},
      {"pieLegendTextSize", "14px"},
      {"attributeBackgroundColorOdd", look.card},
      {"attributeBackgroundColorEven", look.card},
      {"fontSize", "15px"},
  };
  // As many as the library counts to.
  for (std::size_t i = 0; i < 12; ++i) {
    const char* fill = look.fills[i % look.fills.size()];
    const QString number = QString::number(i);
    for (const char* name : {"cScale", "git", "fillType", "surface"})
      variables[name + number] = fill;
    variables["pie" + QString::number(i + 1)] = fill;
    for (const char* name : {"cScaleLabel", "gitBranchLabel"}) variables[name + number] = look.text;
    variables["cScaleInv" + number] = look.line;
  }
  variables["xyChart"] = chartLook(look);
  return variables;
}

}  // namespace nomely
