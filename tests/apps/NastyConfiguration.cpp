#include "apps/NastyConfiguration.h"

#include <algorithm>
#include <limits>
#include <random>
#include <set>

namespace quarl::test {
namespace {

using namespace store;

constexpr qint32 kLargestId = std::numeric_limits<qint32>::max();

QString AllBytes() {
  QString text;
  for (char16_t c = 0; c < 256; ++c) text += QChar(c);
  return text;
}

const std::vector<QString>& Texts() {
  static const std::vector<QString> texts = {
      QString(),
      QStringLiteral(" "),
      QStringLiteral("web \"1\" \\n 'x' <b>&amp;</b>"),
      QStringLiteral("two\nlines\r\nand\ttab"),
      QString::fromUtf8("\xd7\xa9\xd7\xa8\xd7\xaa \xd8\xae\xd8\xa7\xd8\xaf\xd9\x85"),
      QStringLiteral(u"abc\u202egnp.exe\u202c \u2066x\u2069 \u2028 \u0085 \u009b31m"),
      QString::fromUtf8("\xf0\x9f\x98\x80\xf0\x9f\x91\xa9\xe2\x80\x8d\xf0\x9f\x92\xbb e\xcc\x81 \xe6\xbc\xa2"),
      QStringLiteral(u"\ufeffmarked\ufeff"),
      QStringLiteral(u"\uffff\ufdd0"),
      QString(10000, QChar(u'\u00e4')),
      QStringLiteral("{\"id\": 1, \"\": [null]} // */"),
      QStringLiteral("\x1b]0;title\x07\x1b[2J"),
      AllBytes(),
  };
  return texts;
}

class Maker {
 public:
  explicit Maker(unsigned seed) : random_(seed) {}

  Configuration Make() {
    Configuration configuration;
    Types(configuration.testTypes);
    Types(configuration.alertTypes);
    testTypes_ = &configuration.testTypes;
    alertTypes_ = &configuration.alertTypes;
    Fill(configuration.root);
    for (int i = 0; i < 4; ++i) {
      GroupConfiguration group;
      group.id = Id(nodes_);
      group.name = AnyText();
      group.description = AnyText();
      Fill(group);
      configuration.groups.push_back(group);
    }
    return configuration;
  }

 private:
  unsigned Below(std::size_t end) { return static_cast<unsigned>(random_() % end); }
  QString AnyText() { return Texts()[Below(Texts().size())]; }
  qint16 AnyNumber() {
    constexpr qint16 kEdges[] = {-32768, -1, 0, 1, 2, 3, 4, 32767};
    return kEdges[Below(std::size(kEdges))];
  }
  qint32 Id(std::set<qint32>& taken) {
    qint32 id = taken.empty() ? kLargestId : static_cast<qint32>(1 + random_() % 1000);
    while (!taken.insert(id).second) ++id;
    return id;
  }
  std::optional<ScheduleRecord> Schedule() {
    if (Below(3) == 0) return std::nullopt;
    const QDate days[] = {QDate(1, 1, 1), QDate(2024, 2, 29), QDate(9999, 12, 31), QDate()};
    const QTime times[] = {QTime(0, 0), QTime(23, 59, 59), QTime(0, 0, 0, 1), QTime()};
    return ScheduleRecord{Below(2) == 0, days[Below(4)], times[Below(4)], AnyNumber(), AnyNumber()};
  }
  void Types(std::vector<TypeConfiguration>& types) {
    std::set<qint32> ids;
    for (int i = 0; i < 3; ++i) types.push_back({Id(ids), AnyText(), QStringLiteral("m \"%1\" \u00e9.dll").arg(i)});
    std::sort(types.begin(), types.end(), [](const auto& a, const auto& b) { return a.id < b.id; });
  }
  void Alerts(std::vector<AlertConfiguration>& alerts) {
    for (const TypeConfiguration& type : *alertTypes_) alerts.push_back({Id(alerts_), type.id, AnyText(), AnyText()});
  }
  void Fill(GroupConfiguration& group) {
    group.schedule = Schedule();
    Alerts(group.alerts);
    for (int i = 0; i < 3; ++i) {
      ServerConfiguration server{Id(nodes_), AnyText(), AnyText(), std::nullopt, Schedule(), {}, {}};
      if (Below(2) == 0) server.failThreshold = AnyNumber();
      for (const TypeConfiguration& type : *testTypes_) {
        server.tests.push_back({Id(tests_), type.id, AnyText(), AnyText()});
      }
      std::sort(server.tests.begin(), server.tests.end(), [](const auto& a, const auto& b) { return a.id < b.id; });
      Alerts(server.alerts);
      group.servers.push_back(server);
    }
  }

  std::mt19937 random_;
  std::set<qint32> nodes_, tests_, alerts_;
  const std::vector<TypeConfiguration>* testTypes_ = nullptr;
  const std::vector<TypeConfiguration>* alertTypes_ = nullptr;
};

}  // namespace

Configuration NastyConfiguration(unsigned seed) {
  return Maker(seed).Make();
}

}  // namespace quarl::test
