#include "tests/local/LocalModule.h"

#include <array>
#include <cerrno>
#include <system_error>

#include "kit/Text.h"
#include "tests/common/Fields.h"
#include "tests/common/Settings.h"
#include "tests/common/Texts.h"
#include "tests/common/Verdict.h"

namespace quarl::checks {
namespace {

constexpr double kGiB = 1024.0 * 1024 * 1024;
constexpr double kKiBInGiB = 1024.0 * 1024;
constexpr std::chrono::milliseconds kDiskLimit{10000};

struct LoadRow {
  const char* key;  ///< of the limits and of the figure
  const char* what;
};
constexpr std::array<LoadRow, 3> kLoads = {{
    {"load1", "load of 1 minute a processor"},
    {"load5", "load of 5 minutes a processor"},
    {"load15", "load of 15 minutes a processor"},
}};

struct Findings {
  Verdict verdict{};
  std::string facts{};
  kit::PerformanceData performance{};
};

double Percent(double part, double whole) {
  return whole > 0 ? 100 * part / whole : 0;
}

std::string GiB(double number) {
  return Fixed(number, number < 10 ? 2 : 1) + " GiB";
}

std::string DiskPath(const kit::Properties& properties) {
  std::string path = properties.Text("path");
  if (!path.starts_with('/') || HasControl(path)) throw kit::SettingsError("path", "The path must begin with a slash.");
  return path;
}

Findings DiskFindings(const kit::Properties& properties, const DiskSpace& space) {
  const std::string path = DiskPath(properties);
  if (space.error == ETIMEDOUT) {
    Findings late;
    late.verdict.Blame(Level::Critical, "the file system does not answer");
    late.facts = path;
    return late;
  }
  if (space.error != 0) {
    throw std::runtime_error(path + " cannot be looked at: " + std::generic_category().message(space.error));
  }
  Findings result;
  const double percent = Percent(space.free, space.free + space.used);
  result.facts = path + ": " + GiB(space.free / kGiB) + " free (" + Fixed(percent, 1) + " %)";
  if (properties.Flag("mountPoint") && !space.mountPoint) {
    result.verdict.Blame(Level::Critical, "no file system is mounted there");
  }
  result.verdict.Compare("free space", percent, LimitsOf(properties, "free", true), "%", 1);
  result.verdict.Compare("free space", space.free / kGiB, LimitsOf(properties, "freeGiB", true), "GiB", 2);
  result.performance.Add(FigureOf("free", space.free, 0, "B"));
  result.performance.Add(FigureOf("free_percent", percent, 2, "%"));
  if (space.inodes > 0) {
    const double inodes = Percent(space.inodesFree, space.inodes);
    result.verdict.Compare("free inodes", inodes, LimitsOf(properties, "inodes", true), "%", 1);
    result.performance.Add(FigureOf("inodes_free", inodes, 2, "%"));
  }
  return result;
}

Findings LoadFindings(const kit::Properties& properties, const Load& load) {
  Findings result;
  const int processors = ProcessorCount();
  for (std::size_t i = 0; i < load.size(); ++i) {
    const Limits limits = LimitsOf(properties, kLoads[i].key);
    const double each = load[i] / processors;
    result.facts += (i == 0 ? "Load " : ", ") + Fixed(load[i], 2);
    result.verdict.Compare(kLoads[i].what, each, limits, "", 2);
    result.performance.Add(FigureOf(kLoads[i].key, each, 3, "", limits));
  }
  result.facts += " on " + std::to_string(processors) + (processors == 1 ? " processor" : " processors");
  return result;
}

Findings MemoryFindings(const kit::Properties& properties, const Memory& memory) {
  Findings result;
  const double percent = Percent(memory.available, memory.total);
  result.facts = "Memory: " + GiB(memory.available / kKiBInGiB) + " of " + GiB(memory.total / kKiBInGiB) +
                 " available (" + Fixed(percent, 1) + " %)";
  result.verdict.Compare("available memory", percent, LimitsOf(properties, "memory", true), "%", 1);
  result.performance.Add(FigureOf("available", percent, 2, "%"));
  return result;
}

Findings SwapFindings(const kit::Properties& properties, const Memory& memory) {
  Findings result;
  if (memory.swapTotal <= 0) {
    result.facts = "There is no swap space";
    return result;
  }
  const double percent = Percent(memory.swapFree, memory.swapTotal);
  result.facts = "Swap: " + GiB(memory.swapFree / kKiBInGiB) + " of " + GiB(memory.swapTotal / kKiBInGiB) + " free (" +
                 Fixed(percent, 1) + " %)";
  result.verdict.Compare("free swap", percent, LimitsOf(properties, "swap", true), "%", 1);
  result.performance.Add(FigureOf("swap_free", percent, 2, "%"));
  return result;
}

}  // namespace

kit::CheckOutcome LocalModule::Check(const kit::Server&, const kit::Properties& properties,
                                     std::chrono::milliseconds limit) const {
  const std::string what = properties.Text("what");
  Findings findings;
  if (what == "disk") {
    findings = DiskFindings(properties, disks_.Ask(DiskPath(properties), TimeWithin(limit, kDiskLimit.count())));
  } else if (what == "load") {
    findings = LoadFindings(properties, figures_.ReadLoad());
  } else if (what == "memory") {
    findings = MemoryFindings(properties, figures_.ReadMemory());
  } else {
    findings = SwapFindings(properties, figures_.ReadMemory());
  }
  kit::CheckOutcome outcome = findings.verdict.Outcome(kit::OneLine(findings.facts), properties.Flag(kWarningFails));
  outcome.performance = findings.performance.Text();
  return outcome;
}

std::string LocalModule::Judge(const kit::Properties& properties, std::string& key) const {
  return kit::Judged(key, [&] {
    const std::string what = properties.Text("what");
    if (what == "disk") {
      std::ignore = DiskPath(properties);
      std::ignore = LimitsOf(properties, "free", true);
      std::ignore = LimitsOf(properties, "freeGiB", true);
      std::ignore = LimitsOf(properties, "inodes", true);
    } else if (what == "load") {
      for (const LoadRow& row : kLoads) std::ignore = LimitsOf(properties, row.key);
    } else if (what == "memory") {
      std::ignore = LimitsOf(properties, "memory", true);
    } else {
      std::ignore = LimitsOf(properties, "swap", true);
    }
  });
}

}  // namespace quarl::checks
