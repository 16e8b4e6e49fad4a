#include "Platform/Text/JsonReading.h"

#include <fmt/format.h>

#include "Platform/Text/Unicode.h"

namespace nomely {

Json readJson(std::string_view bytes) {
  constexpr int deepest = 64;
  const auto boundDepth = [](int depth, Json::parse_event_t, Json&) {
    if (depth > deepest) throw JsonError("json.depth", "收到的 JSON 嵌套过深，没有读取");
    return true;
  };
  try {
    return Json::parse(bytes, boundDepth);
  } catch (const Json::parse_error& error) {
    if (trimSpaceAndBreaks(bytes.substr(0, 64)).starts_with('<'))
      throw JsonError("json.page", "收到的是网页而不是数据，请检查设置里的地址");
    throw JsonError("json.syntax",
                    fmt::format("收到的不是有效的 JSON（第 {} 字节处）", error.byte));
  } catch (const Json::exception&) {
    // A number that no double holds; the library's own text would quote it.
    throw JsonError("json.number", "收到的 JSON 里有过大的数，没有读取");
  }
}

}  // namespace nomely
