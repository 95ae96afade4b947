#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <condition_variable>
#include <fstream>

#include "modules/CheckExpectations.h"
#include "tests/local/LocalModule.h"

namespace quarl::checks {
namespace {

using kit::State;
using testing::Json;
using testing::ModuleDriver;
using testing::With;

const char* const kMemory =
    "MemTotal: 1000000 kB\nMemFree: 1 kB\nMemAvailable: 80000 kB\nSwapTotal: 0 kB\nSwapFree: 0 kB\n";
const char* const kSwap = "SwapTotal: 4000 kB\nMemTotal: 1 kB\nMemAvailable: 1 kB\nSwapFree: 400 kB\n";

/// The form's group "what" and further values.
kit::Properties Properties(const LocalModule& module, const char* what, Json values) {
  values["what"] = what;
  return kit::Properties::Read(ModuleDriver::Properties("local", values), module.Fields());
}

void Expect(const LocalModule& module, const kit::Properties& properties, State state, const char* part) {
  kit::CheckOutcome outcome;
  try {
    outcome = module.Check({}, properties, std::chrono::seconds(5));
  } catch (const std::exception& error) {
    outcome.text = error.what();
  }
  EXPECT_EQ(outcome.state, state) << outcome.text;
  EXPECT_NE(outcome.text.find(part), std::string::npos) << outcome.text;
}

TEST(LocalModuleTest, JudgesTheKernelsFigures) {
  const struct {
    const char* name;
    const char* what;
    const char *file, *content;
    State state;
    const char* text;
    Json values = {};
  } cases[] = {
      {"MemoryWarning", "memory", "meminfo", kMemory, State::Passed,
       "WARNING: Memory: 0.08 GiB of 0.95 GiB available (8.0 %) - available memory below 10.0 %"},
      {"MemoryWarningFails", "memory", "meminfo", kMemory, State::Failed, "below 10.0 %", {{"warningFails", true}}},
      {"MemoryCritical", "memory", "meminfo", kMemory, State::Failed, "below 9.0 %", {{"memoryCritical", 9}}},
      {"MemoryFine", "memory", "meminfo", kMemory, State::Passed, "Memory:", {{"memoryWarning", 0}}},
      {"NoSwap", "swap", "meminfo", kMemory, State::Passed, "no swap space"},
      {"Swap", "swap", "meminfo", kSwap, State::Passed, "WARNING: Swap: 0.00 GiB of 0.00 GiB free (10.0 %)"},
      {"Load", "load", "loadavg", "0.00 0.00 0.00 1/2 3\n", State::Passed, "Load 0.00, 0.00, 0.00 on "},
      {"HighLoad", "load", "loadavg", "1000000 2 3", State::Failed, "load of 1 minute a processor above 8.00"},
      {"OldLoad", "load", "loadavg", "0 0 99999.5 1/2 3", State::Failed, "load of 15 minutes"},
      {"NoFile", "load", "nothing", "", State::Unknown, "loadavg cannot be read"},
      {"Exponent", "load", "loadavg", "1e9 2 3", State::Unknown, "does not say"},
      {"Garbage", "load", "loadavg", "0.1 nan 3", State::Unknown, "does not say"},
      {"TwoFigures", "load", "loadavg", "0.1 0.2", State::Unknown, "does not say"},
      {"NothingAvailable", "memory", "meminfo", "MemTotal: 5 kB\nXMemAvailable: 5 kB\n", State::Unknown,
       "does not say MemAvailable"},
      {"NoMemory", "memory", "meminfo", "MemTotal: 0 kB\nMemAvailable: 0 kB\nSwapTotal: 0\nSwapFree: 0\n",
       State::Unknown, "no memory"},
      {"Negative", "swap", "meminfo", "MemTotal: -5 kB", State::Unknown, "does not say MemTotal"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    const QTemporaryDir folder;
    std::ofstream(folder.path().toStdString() + '/' + each.file) << each.content;
    const LocalModule module(SystemFigures(folder.path().toStdString()));
    Expect(module, Properties(module, each.what, each.values), each.state, each.text);
  }
}

TEST(LocalModuleTest, JudgesADisk) {
  constexpr double kGiB = 1024.0 * 1024 * 1024;
  const DiskSpace half{0, 50 * kGiB, 50 * kGiB, 900, 1000, true};
  const DiskSpace full{0, 0, 100 * kGiB, 900, 1000, false};
  const DiskSpace fewInodes{0, 50 * kGiB, 50 * kGiB, 1, 1000, false};
  const DiskSpace noInodes{0, 50 * kGiB, 50 * kGiB, 0, 0, false};
  const struct {
    const char* name;
    DiskSpace space;
    State state;
    const char* text;
    Json values = {};
  } cases[] = {{"Half", half, State::Passed, "/data: 50.0 GiB free (50.0 %)"},
               {"WarningPercent",
                half,
                State::Passed,
                "WARNING: /data: 50.0 GiB free (50.0 %) - free space below 60.0 %",
                {{"freeWarning", 60}}},
               {"CriticalGiB", half, State::Failed, "free space below 50.50 GiB", {{"freeGiBCritical", 50.5}}},
               {"Full", full, State::Failed, "0.00 GiB free"},
               {"NoLimits", full, State::Passed, "/data", {{"freeWarning", 0}, {"freeCritical", 0}}},
               {"FewInodes", fewInodes, State::Failed, "free inodes below 5.0 %"},
               {"NoInodes", noInodes, State::Passed, "/data"},
               {"Mounted", half, State::Passed, "/data", {{"mountPoint", true}}},
               {"NotMounted", noInodes, State::Failed, "no file system is mounted", {{"mountPoint", true}}},
               {"Late", {ETIMEDOUT}, State::Failed, "does not answer"},
               {"NotPermitted", {EACCES}, State::Unknown, "Permission denied"}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    const LocalModule module(SystemFigures(), [&](const std::string&) { return each.space; });
    const Json values = With({{"path", "/data"}}, each.values);
    Expect(module, Properties(module, "disk", values), each.state, each.text);
  }
}

TEST(LocalModuleTest, AFileSystemThatHangsIsAskedOnce) {
  struct {
    std::mutex mutex;
    std::condition_variable changed;
    bool open = false;
    int asked = 0;
  } gate;
  DiskProbe probe([&](const std::string&) {
    std::unique_lock lock(gate.mutex);
    ++gate.asked;
    gate.changed.notify_all();
    gate.changed.wait(lock, [&] { return gate.open; });
    gate.open = false;
    gate.changed.notify_all();
    return DiskSpace{0, 7};
  });
  const std::chrono::milliseconds once(1);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(probe.Ask("/net", once).error, ETIMEDOUT);
  {
    std::unique_lock lock(gate.mutex);
    gate.changed.wait(lock, [&] { return gate.asked > 0; });
    EXPECT_EQ(gate.asked, 1);
    gate.open = true;
    gate.changed.notify_all();
    gate.changed.wait(lock, [&] { return !gate.open; });
    gate.open = true;
  }
  EXPECT_EQ(probe.Ask("/net", std::chrono::seconds(20)).free, 7);
}

TEST(LocalModuleTest, LooksAtThisMachine) {
  const ModuleDriver module("tests/local");
  const QTemporaryDir folder;
  const std::tuple<Json, int16_t, const char*> cases[] = {
      {{{"what", "disk"}, {"freeCritical", 0}, {"freeWarning", 0}, {"mountPoint", true}}, QUARL_PASSED, "free="},
      {{{"what", "disk"}, {"path", folder.path().toStdString()}, {"mountPoint", true}}, QUARL_FAILED, "free="},
      {{{"what", "disk"}, {"path", "/nonexistent"}}, QUARL_UNKNOWN, ""},
      {{{"what", "disk"}, {"path", "tmp"}}, QUARL_UNKNOWN, ""},
      {{{"what", "load"}, {"load1Critical", 1000}, {"load5Critical", 1000}, {"load15Critical", 1000}},
       QUARL_PASSED,
       "load1="},
      {{{"what", "memory"}, {"memoryCritical", 0}}, QUARL_PASSED, "available="},
  };
  for (const auto& [values, state, performance] : cases) {
    const auto answer = module.Check({.properties = ModuleDriver::Properties("local", values)});
    EXPECT_EQ(answer.state, state) << values << answer.text;
    EXPECT_TRUE(answer.performance.starts_with(performance)) << answer.performance;
  }
}

}  // namespace
}  // namespace quarl::checks
