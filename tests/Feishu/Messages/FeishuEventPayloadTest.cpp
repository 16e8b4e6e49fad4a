#include <fmt/format.h>
#include <gmock/gmock.h>

#include "Feishu/Messages/FeishuEventPayload.h"
#include "Feishu/Platform/PhoneMessage.h"
#include "Platform/Text/JsonReading.h"
#include "Support/ManualClock.h"

namespace nomely::test {
namespace {

// "image om_1 “” img_1(image)": what becomes of an event.
std::string outcomeOf(const std::string& payload) {
  static constexpr std::array kinds{"text", "image", "audio", "post", "file"};
  try {
    const auto message = FeishuEventPayload::decode(payload).message();
    if (!message) return "-";
    std::string line = fmt::format("{} {} “{}”", kinds[static_cast<std::size_t>(message->kind)],
                                   message->messageId, message->text);
    for (const auto& [key, type] : message->resources)
      line += fmt::format(" {}({})", key, type == FeishuAPI::Resource::image ? "image" : "file");
    return line;
  } catch (const JsonError&) {
    return "refused";
  }
}

std::string nested(std::size_t depth) {
  return std::string(depth, '[') + std::string(depth, ']');
}

TEST(FeishuEventPayloadTest, WhatIsToBeRecorded) {
  const auto typed = [](const char* type, const std::string& content) {
    return PhoneMessage("om_1", type, content).payload();
  };
  const auto post = [&](const std::string& elements) {
    return typed("post", R"({"title":"题","content":[[)" + elements + "]]}");
  };
  const std::string pictures = [] {
    std::string list;
    for (int i = 0; i <= 100; ++i) list += fmt::format(R"(,{{"tag":"img","image_key":"k{}"}})", i);
    return list.substr(1);
  }();
  const std::pair<std::string, std::string> cases[] = {
      {phone::text("om_1", " \n 你好\u3000").payload(), "text om_1 “你好”"},
      {phone::text("../om", "x").payload(), "text  “x”"},
      {phone::text(std::string(201, 'a'), "x").payload(), "text  “x”"},
      {typed("text", "not json"), "-"},
      {typed("text", R"({"text":7})"), "-"},
      {typed("text", nested(70)), "-"},
      {phone::image("om_1", "a/../b").payload(), "-"},
      {phone::file("om_1", "f", "年度\n报告.PDF").payload(), "file om_1 “年度 报告.PDF” f(file)"},
      {phone::file("om_1", "f", "../../etc/pass\x7Fwd ").payload(), "file om_1 “pass wd” f(file)"},
      {typed("file", R"({"file_key":"f"})"), "file om_1 “” f(file)"},
      {phone::post("om_1", "周末", {"第一行", "img:i1", "第二行"}).payload(),
       "post om_1 “周末\n第一行\n\n第二行” i1(image)"},
      {phone::post("om_1", "", {"img:i1", "img:i1", "img:../x"}).payload(),
       "post om_1 “” i1(image)"},
      {phone::post("", "题", {"img:i1"}).payload(), "post  “题”"},
      {phone::post("om_1", " ", {""}).payload(), "-"},
      {typed("post", R"({"zh_cn":{"title":"题","content":[[{"tag":"text","text":"正文"}]]}})"),
       "post om_1 “题\n正文”"},
      {post(R"({"tag":"a","text":"这里","href":"https://a.b"},{"tag":"a","href":"https://c.d"},)"
            R"({"tag":"at","user_id":"ou_1","user_name":"小王"},{"tag":"at"},)"
            R"({"tag":"emotion","emoji_type":"SMILE"},{"tag":"hr"})"),
       "post om_1 “题\n[这里](https://a.b)https://c.d@小王[SMILE]\n---”"},
      {post(R"({"tag":"md","text":"**粗**"},{"tag":"future","text":"新"},{"tag":"media",)"
            R"("file_key":"f1","image_key":"i1"})"),
       "post om_1 “题\n**粗**新” f1(file)"},
      {post(R"({"tag":"code_block","language":"GO","text":"a\n````\nb"})"),
       "post om_1 “题\n`````GO\na\n````\nb\n`````”"},
      {post(pictures), "-"},
      {typed("post", R"({"title":[],"content":{"a":1}})"), "-"},
      {"", "refused"},
      {"[]", "refused"},
      {"\"\xFF\"", "refused"},
      {nested(100000), "refused"},
      {R"({"event":{}})", "refused"},
      {R"({"event":{"message":[]}})", "refused"},
      {R"({"event":{"message":{}}})", "-"},
      {R"({"event":{"message":{"message_id":5,"message_type":[],"content":{}}},"header":1})", "-"},
  };
  for (const auto& [payload, expected] : cases)
    EXPECT_EQ(outcomeOf(payload), expected) << payload.substr(0, 300);
}

TEST(FeishuEventPayloadTest, MomentsFrom2000ToTomorrow) {
  const ManualClock clock("2026-03-01 09:30:05");
  const auto textOf = [](const char* local) {
    const Moment moment = DateFormatters::isoDateTime.parse(local).value();
    return std::to_string(moment.time_since_epoch().count() / 1000);
  };
  const std::string bad[] = {textOf("1999-12-31 23:59:59"),
                             textOf("2026-03-03 00:00:00"),
                             "",
                             "0",
                             "-1",
                             "nan",
                             "1e400",
                             "9223372036854775807",
                             textOf("2026-03-01 09:00:00") + " "};
  for (const std::string& createTime : bad)
    EXPECT_FALSE(FeishuEventPayload{.createTime = createTime}.eventCreateTime(clock)) << createTime;
  for (const char* local : {"2000-01-01 00:00:00", "2026-02-28 23:59:50", "2026-03-02 23:59:59"})
    EXPECT_EQ(FeishuEventPayload{.createTime = textOf(local)}.eventCreateTime(clock),
              DateFormatters::isoDateTime.parse(local));
}

}  // namespace
}  // namespace nomely::test
