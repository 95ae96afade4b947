#include <gtest/gtest.h>

#include "kit/Error.h"
#include "kit/Properties.h"
#include "kit/PropertiesCache.h"
#include "kit/TestModule.h"

namespace quarl::kit {
namespace {

const Form& TestForm() {
  static const Form form{
      "probe",
      "Probe",
      {{.key = "count", .label = "Count", .type = FieldType::Integer, .standard = 3, .minimum = 1, .maximum = 10},
       {.key = "share", .label = "Share", .type = FieldType::Decimal, .standard = 0.5},
       {.key = "name", .label = "Name", .standard = "x", .required = true, .longest = 8},
       {.key = "body", .label = "Body", .type = FieldType::Lines, .standard = ""},
       {.key = "hosts", .label = "Hosts", .type = FieldType::List, .standard = Json::array(), .longest = 5},
       {.key = "on", .label = "On", .type = FieldType::Boolean, .standard = false},
       {.key = "mode",
        .label = "Mode",
        .type = FieldType::Choice,
        .standard = "a",
        .choices = {{"a", "A"}, {"b", "B"}}},
       {.key = "word",
        .label = "Word",
        .type = FieldType::Secret,
        .standard = "",
        .required = true,
        .enabledWhen = Condition{"on", true}}}};
  return form;
}

std::string Stored(const std::string& members) {
  return R"({"format":1,"module":"probe")" + members + "}";
}

TEST(KitPropertiesTest, ReadsWhatItCanAndSaysWhatItCannot) {
  const std::string deep = Stored(R"(,"other":)" + std::string(5000, '[') + std::string(5000, ']'));
  const struct {
    const char* name;
    std::string text;
    const char* note;  // a part of the note; "" for no note at all
    long long count;
  } rows[] = {
      {"empty", "", "", 3},
      {"only NULs", std::string(4, '\0'), "", 3},
      {"good", Stored(R"(,"values":{"count":7})"), "", 7},
      {"behind a NUL", Stored(R"(,"values":{"count":7})") + std::string("\0{", 2), "", 7},
      {"no values", Stored(""), "", 3},
      {"values are no object", Stored(R"(,"values":[7])"), "", 3},
      {"broken", R"({"format":1,)", "cannot be read", 3},
      {"no JSON", "count=7", "cannot be read", 3},
      {"no object", "[1]", "cannot be read", 3},
      {"no UTF-8", Stored(",\"values\":{\"name\":\"\xff\"}"), "cannot be read", 3},
      {"too deep", deep, "cannot be read", 3},
      {"no format", R"({"module":"probe"})", "cannot be read", 3},
      {"format of a wrong kind", R"({"format":"1","module":"probe"})", "cannot be read", 3},
      {"foreign", R"({"format":1,"module":"pr\nobe","values":{"count":7}})", "another module (\"pr obe\")", 3},
      {"newer", R"({"format":2,"module":"probe","values":{"count":7}})", "newer version", 3},
      {"wrong kind", Stored(R"(,"values":{"count":"7"})"), "Count: the stored value", 3},
      {"a fraction", Stored(R"(,"values":{"count":7.5})"), "whole number from 1 to 10", 3},
      {"below", Stored(R"(,"values":{"count":0})"), "Count: ", 3},
      {"above", Stored(R"(,"values":{"count":18446744073709551615})"), "Count: ", 3},
      {"over-long", Stored(R"(,"values":{"count":7,"name":"123456789"})"), "at most 8", 7},
      {"control character", Stored(R"(,"values":{"count":7,"name":"a\u0000b"})"), "Control characters", 7},
      {"tab in lines", Stored(R"(,"values":{"count":7,"body":"a\n\tb"})"), "", 7},
      {"list with a number", Stored(R"(,"values":{"count":7,"hosts":["a",1]})"), "Hosts: ", 7},
      {"list with a long entry", Stored(R"(,"values":{"count":7,"hosts":["a","123456"]})"), "Line 2: ", 7},
      {"no such choice", Stored(R"(,"values":{"count":7,"mode":"c"})"), "Mode: ", 7},
      {"flag as number", Stored(R"(,"values":{"count":7,"on":1})"), "On: ", 7},
      {"secret in its place", Stored(R"(,"values":{"count":7},"secrets":{"word":3})"), "Word: ", 7},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const Properties properties = Properties::Read(row.text, TestForm());
    EXPECT_EQ(properties.Integer("count"), row.count);
    EXPECT_EQ(properties.Note().empty(), *row.note == '\0') << properties.Note();
    EXPECT_NE(properties.Note().find(row.note), std::string::npos) << properties.Note();
    const Properties again = Properties::Read(properties.ToText(), TestForm());
    EXPECT_EQ(again.Note(), "");
    EXPECT_EQ(again.Values(), properties.Values());
  }
}

TEST(KitPropertiesTest, UnknownMembersSurviveAndSecretsStandApart) {
  Properties properties = Properties::Read(
      Stored(R"(,"values":{"count":7,"later":[1]},"secrets":{"word":"w","key":"k"},"comment":"c")"), TestForm());
  properties.SetValues({{"count", 9}, {"word", "new"}, {"stranger", 1}, {"mode", "c"}});
  const Json text = Json::parse(properties.ToText());
  EXPECT_EQ(text["values"]["count"], 9);
  EXPECT_EQ(text["values"]["later"], Json({1}));
  EXPECT_EQ(text["values"]["mode"], "a");
  EXPECT_EQ(text["secrets"], Json({{"word", "new"}, {"key", "k"}}));
  EXPECT_EQ(text["comment"], "c");
  EXPECT_FALSE(text["values"].contains("word"));
  EXPECT_FALSE(text["values"].contains("stranger"));
}

TEST(KitPropertiesTest, OnlyFieldsThatAreInUseMustBeFilled) {
  const auto finding = [](const Json& changed) {
    Json values = Properties::Read("", TestForm()).Values();
    values.update(changed);
    const auto found = FirstDefect(TestForm(), values);
    return found ? found->key : "";
  };
  EXPECT_EQ(finding({{"on", false}}), "");
  EXPECT_EQ(finding({{"on", true}}), "word");
  EXPECT_EQ(finding({{"on", true}, {"word", "w"}}), "");
  EXPECT_EQ(finding({{"name", "  "}}), "name");
}

TEST(KitPropertiesTest, TheCacheGivesEachTextItsOwnValuesHoweverManyThereAre) {
  PropertiesCache cache;
  int judged = 0;
  const Judge judge = [&](const Properties& properties, std::string& key) {
    ++judged;
    key = "count";
    return properties.Integer("count") == 4 ? "Not four." : "";
  };
  EXPECT_EQ(cache.Get(Stored(R"(,"values":{"count":4})"), TestForm(), judge)->trouble, "Count: Not four.");
  EXPECT_NE(cache.Get("broken", TestForm(), judge)->trouble, "");
  for (int round = 0; round < 2; ++round)
    for (int number = 0; number < 1000; ++number) {
      const std::string text = Stored(R"(,"values":{"share":)" + std::to_string(number) + "}");
      ASSERT_EQ(cache.Get(text, TestForm(), judge)->properties.Decimal("share"), number);
    }
  EXPECT_EQ(judged, 1001);
  const std::string padding(2000, ' ');
  for (int number = 0; number < 3000; ++number)
    cache.Get(padding + Stored(R"(,"values":{"share":)" + std::to_string(number) + "}"), TestForm(), judge);
  cache.Get(Stored(R"(,"values":{"share":0})"), TestForm(), judge);
  EXPECT_EQ(judged, 4002) << "the first texts are still kept";
}

class Probe : public TestModule {
 public:
  const Form& Fields() const override { return TestForm(); }
  CheckOutcome Check(const Server& server, const Properties& properties, std::chrono::milliseconds) const override {
    if (server.name == "throws") throw Error("It broke\nin two.");
    return {State::Passed, properties.Text("name") + " \x1b[1m\xff " + server.address, "first=1 second=22", {}};
  }
  std::string About() const override { return "Probe"; }
};

struct Answer {
  int16_t state;
  std::string text;
  std::string performance;
};

Answer RunProbe(const char* name, const std::string& properties, uint32_t room) {
  std::string text(room, 'x');
  std::string performance(room, 'x');
  const QuarlCheckRequest request{sizeof request, name, "10.0.0.1", properties.c_str(), 1000};
  QuarlCheckResult result{sizeof result, {text.data(), room}, {performance.data(), room}, -1};
  static const Probe probe;
  const int16_t state = RunCheck(probe, &request, &result);
  return {state, text.c_str(), performance.c_str()};
}

TEST(KitCheckTest, WhatComesOutIsOneLineThatFits) {
  const auto good = RunProbe("s", "", 100);
  EXPECT_EQ(good.state, QUARL_PASSED);
  EXPECT_EQ(good.text, "x [1m\xEF\xBF\xBD 10.0.0.1");
  EXPECT_EQ(good.performance, "first=1 second=22");
  const auto small = RunProbe("s", "", 12);
  EXPECT_EQ(small.text, "x [1m\xEF\xBF\xBD\xE2\x80\xA6");
  EXPECT_EQ(small.performance, "first=1") << "a figure cut in two is another figure";
  EXPECT_EQ(RunProbe("s", "", 1).text, "");
  const auto thrown = RunProbe("throws", "", 100);
  EXPECT_EQ(thrown.state, QUARL_UNKNOWN);
  EXPECT_EQ(thrown.text, "It broke in two.");
}

TEST(KitCheckTest, SettingsThatCannotBeUsedAreNoCheckWithOthers) {
  for (const std::string& text :
       {std::string("broken"), Stored(R"(,"values":{"count":99})"), Stored(R"(,"values":{"on":true})"),
        Stored(R"(,"values":{"name":""})"), std::string(R"({"format":2,"module":"probe"})")}) {
    const auto answer = RunProbe("s", text, 200);
    EXPECT_EQ(answer.state, QUARL_UNKNOWN) << text;
    EXPECT_EQ(answer.text.rfind("Settings: ", 0), 0U) << answer.text;
  }
}

}  // namespace
}  // namespace quarl::kit
