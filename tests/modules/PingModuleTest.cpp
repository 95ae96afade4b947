#include <gtest/gtest.h>

#include "Verdict.h"
#include "modules/ModuleDriver.h"
#include "netscan/api/NetLab.h"

namespace quarl::ping {
namespace {

using netscan::EchoResult;
using netscan::EchoStatus;
using netscan::NetLab;
using testing::Json;
using testing::ModuleDriver;
using namespace std::chrono_literals;

constexpr EchoResult kFast{EchoStatus::Answered, 10ms};
constexpr EchoResult kSlow{EchoStatus::Answered, 300ms};
constexpr EchoResult kLost{EchoStatus::TimedOut, 1000ms};
constexpr EchoResult kFar{EchoStatus::HostUnreachable, 1ms};
constexpr EchoResult kLocal{EchoStatus::NoResources, 0us};

TEST(PingVerdictTest, LossAndRoundTripDecide) {
  const Settings settings{4, 1000ms, {20, 60}, {100, 200}, false};
  const struct {
    std::vector<EchoResult> echoes;
    kit::State state;
    const char* text;
    const char* figures;
  } rows[] = {
      {{kFast}, kit::State::Passed, "1 of 1 echoes answered", "rta=10ms;100;200;0 pl=0%;20;60;0;100"},
      {{kFast, kFast, kFast, kLost}, kit::State::Passed, "WARNING: 3 of 4", "rta=10ms;100;200;0 pl=25%;20;60;0;100"},
      {{kFast, kLost, kLost, kFar}, kit::State::Failed, "CRITICAL: 1 of 4", "rta=10ms;100;200;0 pl=75%;20;60;0;100"},
      {{kFast, kSlow},
       kit::State::Passed,
       "WARNING: 2 of 2 echoes answered, mean round trip 155 ms",
       "rta=155ms;100;200;0 pl=0%;20;60;0;100"},
      {{kSlow}, kit::State::Failed, "CRITICAL: 1 of 1", "rta=300ms;100;200;0 pl=0%;20;60;0;100"},
      {{kLost, kLost},
       kit::State::Failed,
       "CRITICAL: none of 2 echoes answered, no answer within 1000 ms",
       "rta=U;100;200;0 pl=100%;20;60;0;100"},
      {{kLocal, kLocal}, kit::State::Unknown, "No echo could be sent", ""},
      {{kLocal, kLost}, kit::State::Failed, "CRITICAL: none", "rta=U;100;200;0 pl=100%;20;60;0;100"},
  };
  for (const auto& row : rows) {
    const auto outcome = JudgeEchoes(row.echoes, settings);
    EXPECT_EQ(outcome.state, row.state) << row.text;
    EXPECT_EQ(outcome.text.rfind(row.text, 0), 0U) << outcome.text;
    EXPECT_EQ(outcome.performance, row.figures);
    Settings strict = settings;
    strict.warningFails = true;
    const bool warning = outcome.text.rfind("WARNING", 0) == 0;
    EXPECT_EQ(JudgeEchoes(row.echoes, strict).state, warning ? kit::State::Failed : row.state);
  }
}

TEST(PingModuleTest, AWarningAboveItsCriticalLimitIsRefused) {
  ModuleDriver module("tests/ping");
  const auto edited = module.SetProperties("", [](ModuleDriver::OpenForm& form) {
    form.values["lossWarning"] = 80;
    EXPECT_EQ(form.validate(form.values).field, "lossCritical");
    form.values["lossWarning"] = 60;
    form.values["roundTripWarning"] = 501;
    EXPECT_EQ(form.validate(form.values).field, "roundTripCritical");
    form.values["roundTripWarning"] = 500;
    return int16_t{0};
  });
  EXPECT_EQ(edited.result, 0);
  EXPECT_EQ(Json::parse(edited.properties)["values"]["roundTripWarning"], 500);
}

/// The module in a network of its own.
class PingNetworkTest : public ::testing::Test {
 protected:
  struct Answer {
    int state;
    std::string text, figures;
  };
  void SetUp() override {
    if (!lab_.Missing().isEmpty()) GTEST_SKIP() << lab_.Missing().toStdString();
    probe_ = lab_.Install(QStringLiteral(MODULE_PROBE), QStringLiteral("module_probe"), false);
    module_ =
        lab_.Install(QStringLiteral(QUARL_LAYOUT_DIR "/plugins/tests/ping.dll"), QStringLiteral("ping.dll"), false);
    lab_.Set(NetLab::Side::Near, "ping_group_range", "1 0");
  }
  Answer Ask(NetLab::User user, const char* address, const Json& values) {
    const std::string properties = ModuleDriver::Properties("ping", values);
    const auto run = lab_.Run(user, probe_, {module_, QString::fromUtf8(address), QString::fromStdString(properties)});
    EXPECT_EQ(run.exitCode, 0) << run.errors.toStdString();
    const auto line = [&](qsizetype at) { return run.output.value(at).toStdString(); };
    return {std::atoi(line(0).c_str()), line(1), line(2)};
  }
  NetLab lab_;
  QString probe_, module_;
};

TEST_F(PingNetworkTest, HostsOfEveryFateAreJudged) {
  const Json patient{{"timeOut", 20000}, {"roundTripWarning", 20000}, {"roundTripCritical", 20000}};
  const Json waiting{{"timeOut", 8000}};  // the router looks for the host for three seconds
  const Json hasty{{"count", 7}, {"timeOut", 30}};
  Json warned = patient;
  warned["roundTripWarning"] = 0;
  Json warnedAndFailed = warned;
  warnedAndFailed["warningFails"] = true;
  Json critical = warned;
  critical["roundTripCritical"] = 0;
  const struct {
    const char* address;
    Json values;
    int state;
    const char* text;
    const char* figures;
  } rows[] = {
      {"10.77.0.2", patient, QUARL_PASSED, "4 of 4 echoes answered", "pl=0%"},
      {"127.0.0.1", patient, QUARL_PASSED, "4 of 4 echoes answered", "pl=0%"},
      {"10.77.0.2", warned, QUARL_PASSED, "WARNING: 4 of 4", "pl=0%"},
      {"10.77.0.2", warnedAndFailed, QUARL_FAILED, "WARNING: 4 of 4", "pl=0%"},
      {"10.77.0.2", critical, QUARL_FAILED, "CRITICAL: 4 of 4", "pl=0%"},
      {"10.77.1.1", hasty, QUARL_FAILED, "CRITICAL: none of 7 echoes answered, no answer within 30 ms", "pl=100%"},
      {"10.77.2.1", waiting, QUARL_FAILED, "CRITICAL: none of 4 echoes answered, the host is unreachable", "rta=U"},
      {"192.0.2.1", patient, QUARL_FAILED, "CRITICAL: none of 4 echoes answered, the network is unreachable", "rta=U"},
      {"224.0.0.1", patient, QUARL_FAILED, "CRITICAL: none of 4 echoes answered, this is no address", "rta=U"},
      {"fe80::1", patient, QUARL_UNKNOWN, "\"fe80::1\" is no IPv4 address.", ""},
      {"", patient, QUARL_UNKNOWN, "\"\" is no IPv4 address.", ""},
  };
  for (const auto& row : rows) {
    Answer answer = Ask(NetLab::User::Root, row.address, row.values);
    // A router owes nobody its word that a host is unreachable: the kernel bounds how many it sends.
    const bool mayBeLost = std::string(row.text).ends_with("the host is unreachable");
    for (int again = 0; again < 2 && mayBeLost && answer.text.find("no answer") != std::string::npos; ++again) {
      answer = Ask(NetLab::User::Root, row.address, row.values);
    }
    EXPECT_EQ(answer.state, row.state) << row.address << ": " << answer.text;
    EXPECT_EQ(answer.text.rfind(row.text, 0), 0U) << answer.text;
    EXPECT_NE(answer.figures.find(row.figures), std::string::npos) << answer.figures;
  }
}

TEST_F(PingNetworkTest, WithoutPermissionTheStateIsUnknownUntilTheHelperHasIt) {
  const Answer without = Ask(NetLab::User::Nobody, "10.77.0.2", {});
  EXPECT_EQ(without.state, QUARL_UNKNOWN);
  EXPECT_NE(without.text.find("cap_net_raw"), std::string::npos) << without.text;
  const QString helper =
      lab_.Install(QStringLiteral(QUARL_LAYOUT_DIR "/quarl-echo"), QStringLiteral("quarl-echo"), true);
  if (helper.isEmpty()) GTEST_SKIP() << lab_.Missing().toStdString();
  const Answer with = Ask(NetLab::User::Nobody, "10.77.0.2", {{"timeOut", 20000}, {"roundTripCritical", 20000}});
  EXPECT_EQ(with.state, QUARL_PASSED) << with.text;
}

}  // namespace
}  // namespace quarl::ping
