#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "modules/CheckExpectations.h"
#include "modules/Peer.h"
#include "support/Programs.h"

namespace quarl::testing {
namespace {

class AlertCommandTest : public ::testing::Test {
 protected:
  QString Path(const char* name) const { return folder_.filePath(QLatin1String(name)); }
  ModuleDriver::AlertAnswer Alert(const std::string& lines, const Json& more = Json::object(),
                                  const std::string& secret = {}) const {
    Json values{{"program", WriteScript(Path("script"), lines)}};
    values.update(more);
    return module_.Alert(ProblemEvent(), ModuleDriver::Properties("command", values, {{"secret", secret}}));
  }
  std::string Content(const char* name) const {
    QFile file(Path(name));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll().toStdString();
  }
  ModuleDriver module_{"alerts/command"};
  QTemporaryDir folder_;
};

TEST_F(AlertCommandTest, TheFactsStandInTheEnvironment) {
  const auto answer = Alert("env -0 | grep -z ^QUARL_ | sort -z | tr '\\0' '|' > " + Path("out").toStdString(),
                            Json::object(), "top secret");
  ASSERT_EQ(answer.result, 0) << answer.text;
  EXPECT_EQ(
      Content("out"),
      "QUARL_ADDRESS=192.0.2.10|QUARL_EVENT=problem|QUARL_GROUP=Web|QUARL_MESSAGE=The test \"Port 443\" "
      "failed.\n.\n..two dots\nFrom here: 100 %|QUARL_MESSAGE_ID=message-8|QUARL_PROBLEM=problem-7|"
      "QUARL_SECRET=top secret|QUARL_SERVER=www1|QUARL_SINCE=1767225300|QUARL_SUBJECT=Düsseldorf: Port 443 failed|"
      "QUARL_TEST=Port 443|QUARL_TEXT=No answer within 3 s|QUARL_TIME=1767225600|");
}

TEST_F(AlertCommandTest, ArgumentsAreHandedOverWithoutAShell) {
  const Json arguments{"{server}; touch /x", "$(id) {subject}", "", "*"};
  ASSERT_EQ(Alert("printf '<%s>' \"$@\" > " + Path("out").toStdString(), {{"arguments", arguments}}).text, "");
  EXPECT_EQ(Content("out"), "<www1; touch /x><$(id) Düsseldorf: Port 443 failed><><*>");
}

TEST_F(AlertCommandTest, AFailureIsToldInTheProgramsWords) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"Errors", "echo out; echo; echo ' gateway down ' >&2; echo more >&2; exit 3", "gateway down"},
      {"OutputOnly", "echo; echo 'queue full'; exit 1", "queue full"},
      {"Silent", "exit 7", "ended with code 7 and said nothing."},
      {"Signal", "echo died >&2; kill -KILL $$", "was ended by signal 9: died"},
      {"TimeOut", "echo waiting; sleep 100", "did not end within 1 s: waiting"},
      {"Binary", "printf '\\377\\033[2Jx\\n'; exit 1", "\xEF\xBF\xBD [2Jx"},
      {"Secret", "echo \"refused $QUARL_SECRET!\"; exit 1", "refused ***!"}};
  for (const auto& [name, lines, says] : cases) {
    SCOPED_TRACE(name);
    const auto answer = Alert(lines, {{"limit", 1}}, "key");
    EXPECT_EQ(answer.result, 1);
    EXPECT_TRUE(answer.text.ends_with(says)) << answer.text;
  }
  Json gone{{"program", "/nonexistent"}};
  EXPECT_EQ(module_.Alert(ProblemEvent(), ModuleDriver::Properties("command", gone)).text,
            "/nonexistent does not exist, or the interpreter that its first line names does not.");
}

TEST_F(AlertCommandTest, TheFormRefusesWhatCannotRun) {
  ExpectRefusals(module_, ModuleDriver::Properties("command", {{"program", "/bin/true"}}),
                 {{{{"program", "mail"}}, "program"},
                  {{{"program", ""}}, "program"},
                  {{{"arguments", {"{server}", "{host}"}}}, "arguments"},
                  {{{"limit", 0}}, "limit"},
                  {{{"program", "/bin/true"}, {"arguments", {"-v", "{x y}"}}}, ""}});
}

}  // namespace
}  // namespace quarl::testing
