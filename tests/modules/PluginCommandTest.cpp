#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <csignal>
#include <thread>

#include "modules/CheckExpectations.h"
#include "support/Programs.h"
#include "support/WebServer.h"

namespace quarl::testing {
namespace {

class PluginCommandTest : public ::testing::Test {
 protected:
  ModuleDriver::CheckAnswer Check(const Json& values, const Json& secrets = Json::object()) const {
    return module_.Check({.properties = ModuleDriver::Properties("monitoringplugin", values, secrets),
                          .serverName = "a \"name\"; $(touch /tmp/x)"});
  }
  /// Runs lines of a shell as plug-in.
  ModuleDriver::CheckAnswer Script(const std::string& lines, Json values = Json::object(),
                                   const Json& secrets = Json::object()) const {
    values["program"] = WriteScript(folder_.filePath(QStringLiteral("plugin")), lines);
    return Check(values, secrets);
  }

  QTemporaryDir folder_;
  ModuleDriver module_{"tests/monitoringplugin"};
};

TEST_F(PluginCommandTest, RunsRealPlugins) {
  const WebServer server([](const std::string&, WebServer::Peer&) {});
  const std::string port = std::to_string(server.Port());
  const struct {
    const char* program;
    Json arguments;
    int16_t state;
    const char *text, *performance;
  } cases[] = {{"check_dummy", {"0", "all is well"}, kPassed, "OK: all is well", ""},
               {"check_dummy", {"1", "so so"}, kPassed, "WARNING: so so", ""},
               {"check_dummy", {"2", "{name}"}, kFailed, "CRITICAL: a \"name\"; $(touch /tmp/x)", ""},
               {"check_dummy", {"3"}, kUnknown, "UNKNOWN", ""},
               {"check_tcp", {"-H", "{address}", "-p", port}, kPassed, "TCP OK", "time="},
               {"check_tcp", {"-H", "{address}", "-p", "1"}, kFailed, "refused", ""},
               {"/usr/lib/nagios/plugins/check_procs", {"-c", "1:"}, kPassed, "PROCS OK", "procs="},
               {"check_procs", {"-w", ":0"}, kPassed, "WARNING: PROCS WARNING", "procs="},
               {"check_disk", {"-w", "0", "-c", "0", "-p", "/"}, kPassed, "DISK OK", "/="},
               {"check_load", {"-w", "0.9,0.9,0.9", "--nonsense"}, kUnknown, "", ""},
               {"check_none", Json::array(), kUnknown, "/usr/lib/nagios/plugins/check_none does not exist", ""},
               {"..", Json::array(), kUnknown, "may not be run", ""},
               {"./check_dummy", {"0"}, kUnknown, "must begin with a slash", ""},
               {"/etc/passwd", Json::array(), kUnknown, "may not be run", ""}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.program + each.arguments.dump());
    const auto answer = Check({{"program", each.program}, {"arguments", each.arguments}});
    EXPECT_EQ(answer.state, each.state) << answer.text;
    EXPECT_NE(answer.text.find(each.text), std::string::npos) << answer.text;
    EXPECT_TRUE(answer.performance.starts_with(each.performance)) << answer.performance;
    EXPECT_EQ(answer.performance.empty(), *each.performance == '\0') << answer.performance;
  }
}

TEST_F(PluginCommandTest, ReadsWhatAPluginWrites) {
  const struct {
    const char* script;
    int16_t state;
    const char *text, *performance = "";
    Json values = {};
  } cases[] = {
      {"echo 'OK - fine | a=1s;2;3;0;9 b=2'", kPassed, "OK - fine", "a=1s;2;3;0;9 b=2"},
      {"printf 'OK|a=1\\nlong\\ntext|b=2\\nc=3%% d=4\\n'", kPassed, "OK", "a=1 b=2 c=3% d=4"},
      {"printf \"OK|'it''s a disk /'=1.5GB;~:2;@3:4 =1 x y=z a=U b=1|2 'c d'=-3 e=.\"", kPassed, "OK",
       "'it''s a disk /'=1.5GB;~:2;@3:4 a=U 'c d'=-3"},
      {"printf '\\n\\n  second line\\n'", kPassed, "second line"},
      {"printf 'a\\0b\\377\\033[31m\\ttab|p=1\\0 q=2'", kPassed, "a b\xef\xbf\xbd [31m tab", "p=1 q=2"},
      {"echo '| a=1'", kPassed, "The program wrote nothing", "a=1"},
      {"true", kPassed, "The program wrote nothing"},
      {"echo out of order >&2; exit 2", kFailed, "out of order"},
      {"echo WARNING low; exit 1", kPassed, "WARNING low"},
      {"echo low; exit 1", kPassed, "WARNING: low"},
      {"echo low; exit 1", kFailed, "WARNING: low", "", {{"warningFails", true}}},
      {"echo odd; exit 77", kUnknown, "The program ended with code 77, which has no meaning: odd"},
      {"echo said; kill -9 $$", kUnknown, "The program was ended by signal 9 (Killed); it had written: said"},
      {"cat; echo end", kPassed, "end"},
      {"echo begun; while :; do echo more; done", kUnknown,
       "The program wrote more than 256 KiB and was ended; it had written: begun"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.script);
    const auto answer = Script(each.script, each.values);
    EXPECT_EQ(answer.state, each.state);
    EXPECT_EQ(answer.text, each.text);
    EXPECT_EQ(answer.performance, each.performance);
  }
}

TEST_F(PluginCommandTest, HandsOverArgumentsAndACleanEnvironmentAndShowsNoSecret) {
  ::setenv("QUARL_TEST_SECRET_OF_THE_SERVICE", "1", 1);
  const auto answer = Script(
      "echo \"$# <$1> <$2> $KEY $(echo \"$KEY $BOTH\" | tr nxy NXY) $LC_CTYPE $(env | grep -c QUARL_TEST) $(tr '\\0' ' "
      "' "
      "< /proc/$$/cmdline | grep -c "
      "s3cret)\"",
      {{"arguments", {"{name}", "*{{}}"}}, {"environment", {"KEY=s3cret={secret}", "BOTH={secret2}@{address}"}}},
      {{"secret", "{name}"}, {"secret2", "x y"}});
  EXPECT_EQ(answer.text, "2 <a \"name\"; $(touch /tmp/x)> <*{}> s3cret=*** s3cret={Name} X Y@127.0.0.1 C.UTF-8 0 0");
}

TEST_F(PluginCommandTest, LeavesNothingBehind) {
  const std::string mark = "4000." + std::to_string(::getpid());
  const std::string sleep = "sleep " + mark;
  const std::string ignore = "trap '' TERM INT HUP; echo said; ";
  const std::tuple<const char*, std::string, const char*> cases[] = {
      {"Hangs", ignore + sleep, "did not end within 300 ms and was ended; it had written: said"},
      {"HangsWithChildren", ignore + sleep + " & " + sleep, "did not end"},
      {"ForksAway", ignore + sleep + " & exit 0", "said"},
      {"AwayInASessionOfItsOwn", ignore + "setsid " + sleep + " & exit 0", "said"},
      {"HangsAndIsAway", ignore + "setsid sh -c 'setsid " + sleep + " & " + sleep + "' & " + sleep, "did not end"},
  };
  for (const auto& [name, script, text] : cases) {
    SCOPED_TRACE(name);
    const auto answer = Script(script, {{"timeOut", 300}});
    EXPECT_NE(answer.text.find(text), std::string::npos) << answer.text;
    EXPECT_LT(answer.duration, std::chrono::seconds(5));
    EXPECT_EQ(CountProcesses(mark.c_str()), 0);
  }
}

TEST_F(PluginCommandTest, ACheckInStepsThatIsGivenUpEndsItsProgram) {
  const std::string mark = "4001." + std::to_string(::getpid());
  auto steps = module_.BeginSteps(
      {.properties = ModuleDriver::Properties("monitoringplugin", {{"program", "/bin/sleep"}, {"arguments", {mark}}})});
  ASSERT_TRUE(steps->Go(0));
  for (int i = 0; i < 500 && CountProcesses(mark.c_str()) == 0; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ASSERT_TRUE(steps->Go(0));
  }
  ASSERT_EQ(CountProcesses(mark.c_str()), 1);
  EXPECT_FALSE(steps->Go(QUARL_GIVE_UP));
  for (int i = 0; i < 500 && CountProcesses(mark.c_str()) > 0; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_EQ(CountProcesses(mark.c_str()), 0);
}

TEST_F(PluginCommandTest, RunsThatGoOnKeepTheirProcesses) {
  // What one run has moved to another session is not ended by the end of another run.
  int16_t slow = 0;
  std::thread other([&] {
    slow =
        Check({{"program", "/bin/sh"}, {"arguments", {"-c", "setsid -w sh -c 'sleep 1; exit 0' && echo fine"}}}).state;
  });
  for (int i = 0; i < 40; ++i) EXPECT_EQ(Script("setsid sleep 4000 & exit 2").state, kFailed);
  other.join();
  EXPECT_EQ(slow, kPassed);
}

TEST_F(PluginCommandTest, TheFormRefusesWhatCannotBeRun) {
  ExpectRefusals(module_, "",
                 {{{{"program", "check_dummy"}}, ""},
                  {{{"program", ""}}, "program"},
                  {{{"program", "plugins/check_dummy"}}, "program"},
                  {{{"program", "/x"}, {"arguments", {"{secret}"}}}, "arguments"},
                  {{{"program", "/x"}, {"environment", {"=x"}}}, "environment"},
                  {{{"program", "/x"}, {"environment", {"A B=x"}}}, "environment"},
                  {{{"program", "/x"}, {"environment", {"1A=x"}}}, "environment"},
                  {{{"program", "/x"}, {"environment", {"NAME"}}}, "environment"},
                  {{{"program", "/x"}, {"environment", {"NAME={what}"}}}, "environment"},
                  {{{"program", "/x"}, {"environment", {"NAME={secret}"}}}, ""}});
}

}  // namespace
}  // namespace quarl::testing
