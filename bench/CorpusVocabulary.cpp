#include "bench/CorpusVocabulary.h"

#include <span>

namespace nomely::bench {
namespace {

constexpr std::string_view nounWords =
    "工作 时间 事情 问题 朋友 孩子 书 电影 会议 项目 想法 计划 天气 咖啡 早饭 晚饭 午饭 照片 文章 "
    "笔记 方案 代码 文档 邮件 电话 消息 故事 音乐 吉他 钢琴 小说 诗 报告 数据 模型 接口 测试 需求 "
    "设计 版本 客户 同事 老师 学生 课程 作业 考试 论文 实验 结果 原因 经验 教训 习惯 目标 压力 "
    "情绪 心情 梦 身体 睡眠 跑步 游泳 瑜伽 自行车 地铁 公交 飞机 火车 票 酒店 行李 护照 地图 海 山 "
    "河 湖 雪 雨 风 月亮 太阳 星星 树 花 草 猫 狗 鸟 鱼 茶 面包 牛奶 鸡蛋 米饭 面条 饺子 火锅 苹果 "
    "西瓜 葡萄 橘子 菜市场 超市 快递 衣服 鞋子 雨伞 钥匙 手机 电脑 键盘 显示器 耳机 相机 台灯 桌子 "
    "椅子 窗户 阳台 厨房 卧室 房租 工资 账单 预算 保险 税 医院 药 牙齿 眼镜 生日 礼物 婚礼 聚会 "
    "节日 "
    "春节 中秋 旅行 展览 画 雕塑 历史 哲学 心理学 经济 数学 物理 生物 化学 语言 单词 语法 翻译 "
    "词典 "
    "播客 新闻 社会 城市 乡村 老家 奶奶 爷爷 外婆 记忆 童年 未来 自由 责任 勇气 孤独 幸福 意义 "
    "缓存 索引 线程 协议 服务器 数据库 编译器 算法 架构 性能 日志 备份 权限 密码 漏洞 部署 监控";
constexpr std::string_view verbWords =
    "看 写 读 听 做 买 讨论 整理 准备 完成 修改 收到 发现 想起 忘记 喜欢 讨厌 学习 练习 研究 解决 "
    "检查 提交 打开 关闭 修 洗 煮 烤 切 种 养 画 拍 录 唱 弹 跑 走 骑 爬 游 飞 等 找 丢 借 还 送 "
    "寄 "
    "取 换 搬 装 拆 卖 租 订 退 申请 批准 拒绝 接受 参加 组织 主持 邀请 拜访 照顾 陪 带 教 帮 问 "
    "回答 "
    "解释 翻译 复习 背 抄 算 设计 实现 重构 优化 调试 测试 部署 备份 恢复 迁移 合并 评审 总结 反思 "
    "计划 推迟 取消 确认 庆祝 纪念 怀念 感谢 原谅 相信 怀疑 担心 期待 享受 放弃 坚持";
constexpr std::string_view adjectiveWords =
    "好 开心 累 忙 安静 顺利 有意思 简单 复杂 重要 麻烦 温暖 冷 热 舒服 疲惫 清楚 模糊 漂亮 新鲜 "
    "好吃 难过 平静 焦虑 兴奋 无聊 奇怪 熟悉 陌生 珍贵 普通 特别 便宜 贵 快 慢 远 近 轻松 沉重 "
    "明亮 "
    "昏暗 干净 潮湿 干燥 柔软 坚硬 甜 苦 咸 淡 诚实 聪明 笨拙 优雅 粗糙 细致 幸运 遗憾 值得 踏实 "
    "惭愧 骄傲 感动 惊讶 失望 充实 空虚 自在 拘谨";
constexpr std::string_view adverbWords =
    "今天 终于 其实 可能 已经 又 还是 总是 突然 慢慢 大概 确实 居然 果然 好像 一直 偶尔 经常 几乎 "
    "反而 忽然 悄悄 认真 仔细 随便 勉强 故意 不小心 顺便 当场 连夜 一口气 无意中 不得不";
constexpr std::string_view personWords =
    "我 我们 他 她 妈妈 爸爸 老王 小李 同事们 老板 弟弟 姐姐 邻居 房东 医生 张老师 陈姐 阿杰 小雨 "
    "大伟 林林 师傅 店员 司机 快递员 客户 表哥 表妹 外公 室友 教练 编辑 导师 学弟";
constexpr std::string_view placeWords =
    "家里 公司 办公室 图书馆 咖啡馆 公园 路上 地铁上 书店 超市 学校 医院 机场 车站 海边 山上 江边 "
    "楼下 阳台上 厨房里 操场 健身房 泳池 美术馆 博物馆 老城区 郊外 村口 桥上 巷子里 北京 上海 杭州 "
    "成都 广州 深圳 苏州 西安 昆明 大理 厦门 青岛 京都 东京 伦敦";
constexpr std::string_view timeWords =
    "今天 早上 晚上 下午 中午 昨天 刚才 周末 这周 上周 最近 傍晚 凌晨 睡前 起床后 饭后 下班后 "
    "出门前 清晨 半夜 月初 月底 年底 前几天 雨停之后 开会前 散步时 放假那天 入秋以后 下雪那天";
constexpr std::string_view englishWords =
    "the time note memo project meeting idea book page code review team plan build test release "
    "design draft issue query index cache file folder tag search sync backup morning evening "
    "coffee "
    "walk train city weather music guitar film paper method result question answer reason story "
    "chapter author reader memory habit focus energy budget travel ticket hotel airport garden "
    "kitchen recipe bread market weekend holiday friend family mother father brother teacher "
    "student "
    "language grammar vocabulary translation history philosophy science physics theory experiment "
    "sample protocol server client latency throughput compiler thread deadlock allocator iterator "
    "snapshot migration rollback checksum entropy heuristics serendipity threshold palimpsest";
constexpr std::string_view emojiWords =
    "😀 👍 🎉 ☕ 📚 🌧️ ☀️ 🏃 🍜 😂 "
    "❤️ 🙏 🤔 ✅ 🚀 💡 🐱 🎸 😴 🥲 "
    "👨‍👩‍👧 🇨🇳 🏔️ 👩🏽‍💻 🍉 🌕 🎂 ✈️ 🧘 🐛";

constexpr std::string_view tailFirst =
    "青白清远云山水木石林竹松梅兰菊荷柳桃杏梨春夏秋冬晨暮朝夕星月风雨霜雪雾露溪泉江湖海岛岸桥亭楼台"
    "阁院庭窗灯烛茶酒琴棋诗画墨纸砚笔古旧新奇幽静寒暖温凉轻重浓淡深浅高低长短方圆曲直明暗";
constexpr std::string_view tailSecond =
    "影声色香味光波纹痕迹路径途程岁月年华景象境界情意思绪念怀梦忆语言词句章节篇卷册页序曲调韵律拍弦"
    "歌谣谱舞步姿态容颜貌神气质性格品德行为事业务工匠艺术法则理论学派别号称谓名籍贯乡土田野园圃";

constexpr std::array<std::string_view, 24> chinesePatterns{
    "T，P在LV了N，D觉得A。",
    "TDVN，VN，有点A。",
    "P说N很A，D也不必VN。",
    "在L遇到P，聊了聊N和N，A。",
    "N比想象中A，DVN之后好多了。",
    "DV了C个N，其中一个特别A。",
    "为什么TN总是这么A？",
    "想V的N还有很多，TD先VN。",
    "P的N让人A，D想起了L的N。",
    "T去L的时候V了N，回来V到半夜。",
    "如果DVN，N就会更A一些。",
    "V完N，VN，VN，一天就这样过去了。",
    "记得V一下N，P等着用。",
    "N的关键在于N，而不是N。",
    "A的N，A的N，A的T。",
    "P和P在LDVN，V了C分钟。",
    "L的N真A！",
    "TV了一半的N，TDV完了。",
    "关于N，P有一个A的说法：V而不V，N自来。",
    "没有什么比TDVN更A的了。",
    "把N从L带回来，DV了又V。",
    "C年以后再V这段N，大概会觉得A。",
    "P问我N的事，我DV了V，说A。",
    "好的N不是V出来的，是V出来的。",
};
constexpr std::array<std::string_view, 8> mixedPatterns{
    "T在LVN，顺便把 E 的 E VC遍。",   "P发来一份 E E，N部分DA。",
    "这个 E 的N很A，V之前先看 E。",   "V了 E，N从 C 毫秒降到了 C 毫秒。",
    "“E E”这个说法DA，中文可以叫N。", "N用的是 E，DVNE，A。",
    "周会：E E 延期，N由P来V。",      "看到一句 “E is the E of E”，想V进N里。",
};
constexpr std::array<std::string_view, 8> englishPatterns{
    "the E of the E is about E and E. ",    "E first, E later; the E can wait. ",
    "there is no E without a good E. ",     "spent C minutes on the E, mostly on E and E. ",
    "what if the E were just another E? ",  "a E for every E, and a E for every E. ",
    "we read the E twice and kept the E. ", "it is the E that makes the E, not the E. ",
};

struct TagBranch {
  std::string_view root;
  std::string_view children;
};
constexpr std::array<TagBranch, 13> tagTree{{
    {"生活", "读书 做饭 运动 旅行 家人 朋友 购物 健康 植物 猫"},
    {"工作", "会议 项目 复盘 周报 招聘 客户 文档"},
    {"工作/项目", "存储 搜索 编辑器 同步 导入"},
    {"学习", "英语 日语 数学 编程 历史 写作"},
    {"学习/编程", "算法 网络 数据库 编译 并发"},
    {"灵感", "文章 产品 标题 句子"},
    {"情绪", "开心 焦虑 感恩 平静"},
    {"阅读", "小说 非虚构 论文 专栏 摘录"},
    {"阅读/小说", "科幻 推理 武侠"},
    {"电影", "纪录片 动画 剧情"},
    {"财务", "账单 预算 投资"},
    {"梦", ""},
    {"diary", "morning evening travel/asia travel/europe"},
}};

std::vector<std::string_view> split(std::string_view words) {
  std::vector<std::string_view> list;
  while (!words.empty()) {
    const std::size_t end = words.find(' ');
    list.push_back(words.substr(0, end));
    words.remove_prefix(end == std::string_view::npos ? words.size() : end + 1);
  }
  return list;
}

// A character of a stock of characters of three bytes each.
std::string_view characterAt(std::string_view stock, std::size_t index) {
  return stock.substr(index % (stock.size() / 3) * 3, 3);
}

}  // namespace

WordList::WordList(std::string_view words, std::uint32_t tailShare)
    : words_(split(words)), frequency_(words_.size()), tailShare_(tailShare) {}

void WordList::appendTo(std::string& text, Random& random) const {
  if (tailShare_ == 0 || !random.oneIn(tailShare_)) {
    text += words_[frequency_.draw(random)];
    return;
  }
  static const Zipf tailFrequency(tailFirst.size() / 3 * (tailSecond.size() / 3));
  const std::size_t index = tailFrequency.draw(random);
  text += characterAt(tailFirst, index);
  text += characterAt(tailSecond, index / (tailFirst.size() / 3) + index);
}

const Vocabulary& Vocabulary::shared() {
  static const Vocabulary vocabulary{
      .nouns = WordList(nounWords, 9),
      .verbs = WordList(verbWords),
      .adjectives = WordList(adjectiveWords),
      .adverbs = WordList(adverbWords),
      .people = WordList(personWords),
      .places = WordList(placeWords, 12),
      .times = WordList(timeWords),
      .english = WordList(englishWords),
      .emoji = WordList(emojiWords),
  };
  return vocabulary;
}

std::string_view drawChinesePattern(Random& random) {
  return random.pick(chinesePatterns);
}

std::string_view drawMixedPattern(Random& random) {
  return random.pick(mixedPatterns);
}

std::string_view drawEnglishPattern(Random& random) {
  return random.pick(englishPatterns);
}

const std::vector<std::string>& tagLabels() {
  static const std::vector<std::string> labels = [] {
    std::vector<std::string> all;
    for (const TagBranch& branch : tagTree) {
      if (branch.root.find('/') == std::string_view::npos) all.emplace_back(branch.root);
      for (const std::string_view child : split(branch.children))
        all.push_back(std::string(branch.root) + "/" + std::string(child));
    }
    // The tree's order would make whole branches rare.
    Random random(20260228);
    for (std::size_t i = all.size(); i > 1; --i)
      std::swap(all[i - 1], all[random.below(static_cast<std::uint32_t>(i))]);
    return all;
  }();
  return labels;
}

}  // namespace nomely::bench
