#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <limits>

#include "kit/Error.h"
#include "kit/NoBrokenPipeSignal.h"
#include "kit/Performance.h"
#include "kit/Placeholders.h"
#include "kit/Text.h"

namespace quarl::kit {
namespace {

TEST(KitTextTest, HostileTextBecomesOneLine) {
  const std::tuple<std::string, std::size_t, const char*> rows[] = {
      {"plain", 400, "plain"},
      {"  two \r\n\t lines  ", 400, "two lines"},
      {std::string("a\0b", 3), 400, "a b"},
      {"\x1b]0;title\x07", 400, "]0;title"},
      {"\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80", 400, "\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80"},
      {"x\xffy", 400, "x\xEF\xBF\xBDy"},
      {"\xc0\xaf", 400, "\xEF\xBF\xBD\xEF\xBF\xBD"},  // over-long
      {"\xed\xa0\x80x", 400, "\xEF\xBF\xBDx"},        // a surrogate
      {"\xf4\x90\x80\x80", 400, "\xEF\xBF\xBD"},      // behind the last character
      {"\xe2\x82", 400, "\xEF\xBF\xBD"},              // cut off
      {"evil\xe2\x80\xaetxt", 400, "evil txt"},       // right-to-left override
      {"1234567", 7, "1234567"},
      {"12345678", 7, "1234\xE2\x80\xA6"},
      {"123\xc3\xa4\xc3\xa4\xc3\xa4", 7, "123\xE2\x80\xA6"}};
  for (const auto& [bytes, longest, expected] : rows) {
    const std::string line = OneLine(bytes, longest);
    EXPECT_EQ(line, expected);
    EXPECT_TRUE(IsUtf8(line));
    EXPECT_LE(line.size(), longest);
    EXPECT_TRUE(IsUtf8(ToUtf8(bytes)));
  }
}

TEST(KitTextTest, PlaceholdersStandForTheirValuesOnly) {
  const Placeholders known{{"address", "10.0.0.1"}, {"name", "{address}"}};
  const struct {
    const char* text;
    const char* expanded;
    const char* error;  // a part of it, nullptr for none
  } rows[] = {{"", "", nullptr},
              {"http://{address}/{name}", "http://10.0.0.1/{address}", nullptr},
              {"{{address}} {{{name}}}", "{address} {{address}}", nullptr},
              {"}}", "}", nullptr},
              {"{nobody}", "", "no placeholder \"{nobody}\"; possible are \"{address}\" and \"{name}\""},
              {"{}", "", "no placeholder"},
              {"{Name}", "", "no placeholder"},
              {"{name", "", "A single \"{\""},
              {"name}", "", "A single \"}\""},
              {"{na{{me}", "", "A single \"{\""}};
  for (const auto& row : rows) {
    const std::string defect = PlaceholderDefect(row.text, {"address", "name"});
    EXPECT_EQ(defect.empty(), row.error == nullptr) << row.text;
    if (row.error == nullptr) {
      EXPECT_EQ(Expand(row.text, known), row.expanded);
    } else {
      EXPECT_NE(defect.find(row.error), std::string::npos) << defect;
      EXPECT_THROW(Expand(row.text, known), Error) << row.text;
    }
  }
}

TEST(KitTextTest, FiguresAreWrittenAsTheConventionWantsThem) {
  PerformanceData data;
  data.Add({.label = "rta", .value = 0.4215, .unit = "ms", .warning = 100, .critical = 500, .minimum = 0});
  data.Add({.label = "pl", .value = 0, .unit = "%", .minimum = 0, .maximum = 100});
  data.Add({.label = "it's = odd", .value = std::numeric_limits<double>::quiet_NaN()});
  data.Add({.label = "bytes", .value = 1e15, .unit = "B"});
  EXPECT_EQ(data.Text(), "rta=0.4215ms;100;500;0 pl=0%;;;0;100 'it''s _ odd'=U bytes=1000000000000000.000000B");
}

TEST(KitTextTest, NobodyDiesOfABrokenPipe) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  close(ends[0]);
  for (int round = 0; round < 2; ++round) {
    const NoBrokenPipeSignal guard;
    EXPECT_EQ(write(ends[1], "x", 1), -1);
    EXPECT_EQ(errno, EPIPE);
  }
  close(ends[1]);
  sigset_t mask;
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  EXPECT_EQ(sigismember(&mask, SIGPIPE), 0);
}

}  // namespace
}  // namespace quarl::kit
