#include "Core/Markdown/Frontmatter/YamlError.h"

namespace nomely {

std::string chineseYamlReason(std::string_view problem) {
  // `part` of the library's text; the first that is found counts.
  static constexpr struct {
    std::string_view part;
    std::string_view reason;
  } reasons[] = {
      {"tab character", "缩进里有制表符，请改用空格"},
      {"unexpected end of stream", "引号没有闭合，请补上"},
      {"unexpected document indicator", "引号没有闭合，请补上"},
      {"',' or ']'", "方括号没有闭合，或其中缺少逗号，请补上"},
      {"',' or '}'", "花括号没有闭合，或其中缺少逗号，请补上"},
      {"cannot start any token", "值以制表符、@、%、反引号等字符开头，请去掉或给值加上引号"},
      {"mapping values are not allowed", "冒号的位置不对，请检查缩进，值里有冒号时加上引号"},
      {"did not find expected '-'", "列表的缩进不一致，请让各项的 - 对齐"},
      {"block sequence entries are not allowed", "列表项的位置不对，请让每项的 - 单独起行"},
      {"did not find expected key", "缩进不一致或引号后有多余的文字，请改正"},
      {"could not find expected ':'", "键的后面缺少冒号，请补上冒号和空格"},
      {"unknown escape character", "双引号内有不认识的反斜杠转义，请改用单引号"},
      {"did not find expected hexdecimal number", "双引号内的反斜杠转义不完整，请改用单引号"},
      {"control characters are not allowed", "有看不见的控制字符，请删去"},
      {"undefined tag handle", "有不认识的 ! 标记，请删去或给值加上引号"},
      {"alias", "以 * 引用的名字没有用 & 定义过，请改正或给值加上引号"},
      {"anchor", "以 & 开头的名字不完整，请改正或给值加上引号"},
  };
  for (const auto& known : reasons)
    if (problem.find(known.part) != std::string_view::npos) return std::string(known.reason);
  return "不合 YAML 的写法，请检查缩进、冒号和引号";
}

}  // namespace nomely
