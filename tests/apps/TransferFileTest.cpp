#include <gtest/gtest.h>

#include <random>

#include "apps/NastyConfiguration.h"
#include "transfer/ConfigurationFile.h"
#include "transfer/TransferError.h"
#include "transfer/VisibleText.h"

namespace quarl::transfer {
namespace {

const char* const kStoreId = "0b0e4b0a-7b1e-4c58-9a57-0d1c1f4a2b3c";

TEST(TransferFile, GivesBackEveryConfigurationAndTheSameBytes) {
  for (unsigned seed = 0; seed < 60; ++seed) {
    SCOPED_TRACE(seed);
    const ConfigurationFile file{test::NastyConfiguration(seed), QLatin1String(kStoreId)};
    const QByteArray text = WriteConfiguration(file);
    const ConfigurationFile back = ReadConfiguration(text);
    ASSERT_TRUE(back == file);
    ASSERT_EQ(WriteConfiguration(back), text);
  }
}

TEST(TransferFile, HoldsNoCharacterThatActsOnATerminal) {
  const QString text = QString::fromUtf8(WriteConfiguration({test::NastyConfiguration(1), QLatin1String(kStoreId)}));
  EXPECT_TRUE(text.endsWith(QLatin1String("}\n")));
  for (const QChar c : text) {
    const bool acts = (c.category() == QChar::Other_Control && c != QLatin1Char('\n')) ||
                      (c >= QChar(u'\u202a') && c <= QChar(u'\u202e'));
    ASSERT_FALSE(acts) << QString::number(c.unicode(), 16).toStdString();
  }
}

TEST(TransferFile, RefusesToWriteADayThatItCannotSay) {
  ConfigurationFile file;
  file.configuration.root.schedule = ScheduleRecord{true, QDate(10000, 1, 1), QTime(0, 0), 1, 1};
  EXPECT_THROW(static_cast<void>(WriteConfiguration(file)), TransferError);
}

struct Refusal {
  const char* name;
  std::string text;
  const char* says;  ///< a part of the message
};

/// A file with ids, with more keys at its end.
std::string File(const std::string& rest) {
  return std::string(R"({"format":"quarl-configuration","version":1,"storeId":")") + kStoreId + "\"," + rest + "}";
}

std::string Server(const std::string& rest) {
  return File(R"("testTypes":[{"id":1,"name":"Ping","module":"ping.dll"}],
    "root":{"servers":[{"id":1,"name":"a","ipAddress":"","tests":[{"id":1,"type":1,"name":"t","properties":""}])" +
              rest + "}]}");
}

std::string Schedule(const std::string& text) {
  return File(R"("root":{"schedule":{)" + text + "}}");
}

std::string Type(const std::string& module) {
  return File(R"("testTypes":[{"id":1,"name":"","module":")" + module + R"("}])");
}

const Refusal kRefusals[] = {
    {"Empty", "", "empty"},
    {"Blank", " \n\t\n", "empty"},
    {"OtherText", "SQLite format 3", "Line 1, column 1"},
    {"Truncated", File("").substr(0, 40), "Line 1, column"},
    {"TrailingText", File(R"("groups":[])") + "\n\nx", "Line 3, column 1"},
    {"TwoValues", File(R"("groups":[])") + "{}", "Line 1"},
    {"Comment", "{ // no\n}", "Line 1, column 3"},
    {"InvalidUtf8", File("\"root\":{\"servers\":[{\"name\":\"\xff\xfe\"}]}"), "UTF-8"},
    {"HalfASurrogatePair", File(R"("root":{"servers":[{"name":"\ud83d"}]})"), "surrogate"},
    {"RawControlCharacter", File("\"a\nb\":1"), "Line 1"},
    {"LongGarbage", "{\"" + std::string(100000, 'x'), "Line 1"},
    {"NumberTooLarge", File("\"groups\":1e999"), "Line 1"},
    {"TooDeep", std::string(100000, '['), "deep"},
    {"TooDeepObjects", File("\"root\":" + QByteArray("{\"a\":").repeated(100000).toStdString()), "deep"},
    {"KeyTwice", File(R"("groups":[{"id":2,"id":3}])"), "/groups/0: the key \"id\""},
    {"KeyTwiceAtTheTop", File(R"("version":1)"), "\"version\""},
    // JSON, but not a configuration.
    {"List", "[]", "/: must be an object"},
    {"OtherFormat", R"({"format":"other","version":1})", "/format"},
    {"NoFormat", R"({"version":1})", "\"format\" is missing"},
    {"NoVersion", R"({"format":"quarl-configuration"})", "\"version\" is missing"},
    {"NewerVersion", R"({"format":"quarl-configuration","version":2})", "reads up to 1"},
    {"VersionAsText", R"({"format":"quarl-configuration","version":"1"})", "/version"},
    {"StoreIdNoUuid", R"({"format":"quarl-configuration","version":1,"storeId":"x"})", "/storeId"},
    {"UnknownKey", File(R"("serverz":[])"), "/serverz: this key is not known"},
    {"UnknownKeyBelow", Server(R"(,"ip":"1.2.3.4")"), "/root/servers/0/ip"},
    {"NameOnRoot", File(R"("root":{"name":"x"})"), "/root/name"},
    {"GroupsNoList", File(R"("groups":{})"), "/groups: must be a list"},
    {"GroupNoObject", File(R"("groups":[3])"), "/groups/0: must be an object"},
    {"NameMissing", File(R"("groups":[{"id":2}])"), "/groups/0: \"name\" is missing"},
    {"NameNull", File(R"("groups":[{"id":2,"name":null,"description":""}])"), "/groups/0/name: must be a text"},
    {"DescriptionOfKnownGroupMissing", File(R"("groups":[{"id":2,"name":""}])"), "\"description\" is missing"},
    {"IdZero", File(R"("groups":[{"id":0,"name":"","description":""}])"), "/groups/0/id"},
    {"IdNegative", File(R"("groups":[{"id":-1,"name":"","description":""}])"), "/groups/0/id"},
    {"IdPast32Bits", File(R"("groups":[{"id":2147483648,"name":"","description":""}])"), "/groups/0/id"},
    {"IdPast64Bits", File(R"("groups":[{"id":18446744073709551617,"name":"","description":""}])"), "/groups/0/id"},
    {"IdUnsigned64", File(R"("groups":[{"id":18446744073709551615,"name":"","description":""}])"), "/groups/0/id"},
    {"IdAFraction", File(R"("groups":[{"id":1.0,"name":"","description":""}])"), "/groups/0/id"},
    {"IdText", File(R"("groups":[{"id":"1","name":"","description":""}])"), "/groups/0/id"},
    {"IdWithoutStore", R"({"format":"quarl-configuration","version":1,"groups":[{"id":1,"name":"","description":""}]})",
     "/groups/0/id: ids need"},
    {"IdOfGroupAndServer",
     File(R"("root":{"servers":[{"id":1,"name":"","ipAddress":""}]},"groups":[{"id":1,"name":"","description":""}])"),
     "/groups/0/id: the id 1 is used twice"},
    {"TestIdTwice", Server(R"(},{"name":"b","ipAddress":"","tests":[{"id":1,"type":1,"name":"","properties":""}])"),
     "/root/servers/1/tests/0/id"},
    {"TypeIdTwice", File(R"("alertTypes":[{"id":1,"name":"","module":"a"},{"id":1,"name":"","module":"b"}])"),
     "/alertTypes/1/id"},
    {"ModuleTwice", File(R"("alertTypes":[{"id":1,"name":"","module":"a"},{"id":2,"name":"","module":"a"}])"),
     "/alertTypes/1/module"},
    {"DanglingType", Server(R"(,"alerts":[{"id":1,"type":1,"name":"","properties":""}])"),
     "/root/servers/0/alerts/0/type: the file has no type 1"},
    {"TypeMissing", Server(R"(,"alerts":[{"id":1,"name":"","properties":""}])"), "\"type\" is missing"},
    {"PropertiesOfKnownTestMissing", Server(R"(},{"name":"b","ipAddress":"","tests":[{"id":2,"type":1,"name":""}])"),
     "/root/servers/1/tests/0: \"properties\" is missing"},
    {"ModuleInAFolder", Type("../evil.dll"), "/testTypes/0/module"},
    {"ModuleInABackslashFolder", Type("..\\\\evil.dll"), "/testTypes/0/module"},
    {"ModuleParent", Type(".."), "/testTypes/0/module"},
    {"ModuleEmpty", Type(""), "/testTypes/0/module"},
    {"ModuleWithNul", Type("a.dll\\u0000.txt"), "/testTypes/0/module"},
    {"ModuleNamedByATestInAFolder", Server(R"(},{"name":"b","ipAddress":"","tests":[{"type":"x/y.dll","name":""}])"),
     "/root/servers/1/tests/0/type"},
    {"ThresholdPast16Bits", Server(R"(,"failThreshold":32768)"), "/root/servers/0/failThreshold"},
    {"ThresholdNull", Server(R"(,"failThreshold":null)"), "/root/servers/0/failThreshold"},
    {"ScheduleNull", File(R"("root":{"schedule":null})"), "/root/schedule: must be an object"},
    {"EnabledAsNumber", Schedule(R"("enabled":1)"), "/root/schedule/enabled"},
    {"NoSuchDay", Schedule(R"("enabled":true,"startDate":"2026-02-30")"), "/root/schedule/startDate"},
    {"DayOfYearZero", Schedule(R"("enabled":true,"startDate":"0000-01-01")"), "/root/schedule/startDate"},
    {"DayWithTime", Schedule(R"("enabled":true,"startDate":"2026-02-01T00:00")"), "/root/schedule/startDate"},
    {"NoSuchTime", Schedule(R"("enabled":true,"startDate":"2026-02-01","startTime":"24:00:00")"), "/startTime"},
    {"TimeOfTwoForms", Schedule(R"("enabled":true,"startDate":"2026-02-01","startTime":"23:59:59.000")"), "/startTime"},
    {"IntervalPast16Bits",
     Schedule(R"("enabled":true,"startDate":null,"startTime":null,"deltaTime":-32769,"deltaType":1)"), "/deltaTime"},
    {"UnknownUnit", Schedule(R"("enabled":true,"startDate":null,"startTime":null,"deltaTime":1,"deltaType":"weeks")"),
     "/deltaType"},
    {"UnitMissing", Schedule(R"("enabled":true,"startDate":null,"startTime":null,"deltaTime":1)"), "\"deltaType\""},
};

TEST(TransferFile, RefusesOthersWithThePlaceInTheMessage) {
  for (const Refusal& refusal : kRefusals) {
    SCOPED_TRACE(refusal.name);
    try {
      static_cast<void>(ReadConfiguration(QByteArray::fromStdString(refusal.text)));
      ADD_FAILURE() << "was read";
    } catch (const TransferError& error) {
      EXPECT_NE(std::string(error.what()).find(refusal.says), std::string::npos) << error.what();
      EXPECT_LT(error.Description().size(), 500);
    }
  }
}

/// What a damaged file may do: be refused, or be read as something that can be written again.
TEST(TransferFile, SurvivesDamage) {
  const QByteArray whole = QByteArray::fromStdString(
      File(R"("testTypes":[{"id":1,"name":"\u00e4\ud83d\ude00","module":"ping.dll"}],"alertTypes":[{"module":"m"}],
        "root":{"schedule":{"enabled":true,"startDate":"2026-01-31","startTime":"23:59:59","deltaTime":5,"deltaType":"days"},
        "servers":[{"id":3,"name":"a","ipAddress":"::1","failThreshold":-1,
        "tests":[{"id":1,"type":1,"name":"t","properties":""}],"alerts":[{"type":"m","name":"n"}]}]})"));
  static_cast<void>(ReadConfiguration(whole));
  std::mt19937 random(1);
  const auto below = [&](auto end) { return static_cast<qsizetype>(random() % static_cast<std::size_t>(end)); };
  const char pieces[] = "{}[]\",:\\u0019-eE.ntf \n\xff\xc3\xf0";
  int read = 0;
  for (int i = 0; i < 20000; ++i) {
    QByteArray damaged = whole;
    for (qsizetype changes = below(3) + 1; changes > 0; --changes) {
      const qsizetype at = below(damaged.size());
      const QByteArray piece(pieces + below(sizeof(pieces)), 1);
      damaged.replace(at, below(3), below(8) == 0 ? damaged.mid(at / 2, 40) : piece);
    }
    try {
      const ConfigurationFile file = ReadConfiguration(damaged);
      ++read;
      ASSERT_FALSE(WriteConfiguration(file).isEmpty());
    } catch (const TransferError& error) {
      ASSERT_FALSE(error.Description().isEmpty());
    }
  }
  EXPECT_GT(read, 100);
  EXPECT_LT(read, 10000);
}

TEST(VisibleText, EscapesWhatActsAndKeepsTheRest) {
  const struct {
    QString text, visible;
  } cases[] = {{QStringLiteral("a\\b \"c\""), QStringLiteral("a\\b \"c\"")},
               {QStringLiteral("x\n\r\t"), QStringLiteral("x\\n\\r\\t")},
               {QStringLiteral("\x1b[31m"), QStringLiteral("\\u001b[31m")},
               {QString(QChar(u'\0')), QStringLiteral("\\u0000")},
               {QStringLiteral(u"\u009b\u007f"), QStringLiteral("\\u009b\\u007f")},
               {QStringLiteral(u"\u202eabc\u2067"), QStringLiteral("\\u202eabc\\u2067")},
               {QStringLiteral(u"a\u2028b"), QStringLiteral("a\\u2028b")},
               {QString(QChar(0xd800)) + QLatin1Char('x'), QStringLiteral("\\ud800x")},
               {QStringLiteral(u"\U0001f600 \u05d0"), QStringLiteral(u"\U0001f600 \u05d0")}};
  for (const auto& each : cases) EXPECT_EQ(VisibleText(each.text), each.visible);
}

}  // namespace
}  // namespace quarl::transfer
