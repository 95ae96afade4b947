#include <gtest/gtest.h>

#include "forms/FormReader.h"
#include "kit/Error.h"
#include "kit/FormText.h"

namespace quarl::forms {
namespace {

using kit::Json;

std::string With(const std::string& field) {
  return R"({"title":"T","fields":[)" + field + "]}";
}

TEST(FormReaderTest, BrokenFormsAreRefused) {
  const std::string good = R"({"key":"a","type":"text"})";
  const std::string deep = std::string(100000, '[') + std::string(100000, ']');
  const std::tuple<std::string, std::string, bool> rows[] = {
      {With(good), R"({"a":"x"})", true},
      {With(good), R"({"a":"x","b":1})", true},
      {With(R"({"key":"a","type":"text","required":true})"), R"({"a":""})", true},
      {"", R"({"a":"x"})", false},
      {"[]", R"({"a":"x"})", false},
      {deep, R"({"a":"x"})", false},
      {R"({"title":"T"})", "{}", false},
      {R"({"title":"T","fields":[]})", "{}", false},
      {R"({"title":1,"fields":[)" + good + "]}", R"({"a":"x"})", false},
      {With("1"), R"({"a":"x"})", false},
      {With(R"({"type":"text"})"), R"({"":"x"})", false},
      {With(R"({"key":"a\nb","type":"text"})"), R"({"a\nb":"x"})", false},
      {With(R"({"key":"a","type":"colour"})"), R"({"a":"x"})", false},
      {With(R"({"key":"a"})"), R"({"a":"x"})", false},
      {With(good + "," + good), R"({"a":"x"})", false},
      {With(R"({"key":"a","type":"integer","maximum":1e300})"), R"({"a":1})", false},
      {With(R"({"key":"a","type":"integer","maximum":"9"})"), R"({"a":1})", false},
      {With(R"({"key":"a","type":"choice"})"), R"({"a":"x"})", false},
      {With(R"({"key":"a","type":"choice","choices":[]})"), R"({"a":"x"})", false},
      {With(R"({"key":"a","type":"choice","choices":["x"]})"), R"({"a":"x"})", false},
      {With(R"({"key":"a","type":"choice","choices":[{"value":"x"}]})"), R"({"a":"x"})", true},
      {With(R"({"key":"a","type":"choice","choices":[{"value":"x"}]})"), R"({"a":"y"})", false},
      {With(R"({"key":"a","type":"text","enabledWhen":{"key":"b","value":1}})"), R"({"a":"x"})", false},
      {With(R"({"key":"a","type":"text","enabledWhen":{"key":"a"}})"), R"({"a":"x"})", false},
      {With(R"({"key":"a","type":"text","enabledWhen":{"key":"a","value":"x"}})"), R"({"a":"x"})", true},
      {With(good), "", false},
      {With(good), "{}", false},
      {With(good), R"({"a":1})", false},
      {With(good), deep, false},
      {With(R"({"key":"a","type":"integer"})"), R"({"a":1e18})", false},
      {With(R"({"key":"a","type":"integer"})"), R"({"a":1000000000000000000})", false},
      {With(R"({"key":"a","type":"integer","minimum":1,"maximum":5})"), R"({"a":6})", false},
  };
  for (const auto& [form, values, readable] : rows) {
    if (readable)
      EXPECT_NO_THROW(ReadForm(form, values)) << form;
    else
      EXPECT_THROW(ReadForm(form, values), kit::Error) << form.substr(0, 200) << values.substr(0, 200);
  }
}

TEST(FormReaderTest, MutatedFormsAreReadOrRefusedAndNothingElse) {
  const kit::Form form{
      "",
      "Title",
      {{.key = "a", .label = "A", .type = kit::FieldType::Integer, .minimum = 1, .maximum = 9},
       {.key = "b", .label = "B", .type = kit::FieldType::Choice, .choices = {{"x", "X"}}},
       {.key = "c", .label = "C", .type = kit::FieldType::List, .enabledWhen = kit::Condition{"a", 2}}}};
  const std::string text = kit::FormText(form, "Note", "Try");
  const std::string values = Json{{"a", 2}, {"b", "x"}, {"c", {"1"}}}.dump();
  int read = 0;
  int refused = 0;
  for (std::size_t at = 0; at < text.size(); ++at)
    for (const char byte : {'\0', '"', '[', '9', '\xff'}) {
      std::string mutated = text;
      mutated[at] = byte;
      try {
        ReadForm(mutated, values);
        ++read;
      } catch (const kit::Error&) {
        ++refused;
      }
    }
  EXPECT_GT(read, 0);
  EXPECT_GT(refused, read);
}

TEST(FormReaderTest, HostileTextsBecomeShowable) {
  const auto request = ReadForm(
      R"({"title":"a\nb","note":"one\ntwo\u0007","fields":[{"key":"k","label":"\u202eevil","type":"boolean","required":1}]})",
      R"({"k":true})");
  EXPECT_EQ(request.form.title, "a b");
  EXPECT_EQ(request.note, "one\ntwo ");
  EXPECT_EQ(request.form.fields[0].label, "evil");
  EXPECT_FALSE(request.form.fields[0].required);
}

}  // namespace
}  // namespace quarl::forms
