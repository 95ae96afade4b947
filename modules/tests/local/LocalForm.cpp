#include "tests/common/Fields.h"
#include "tests/common/Limits.h"
#include "tests/local/LocalModule.h"

namespace quarl::checks {
namespace {

using kit::Field;
using kit::FieldType;

constexpr double kMostGiB = 1e6;
constexpr double kMostLoad = 1000;

Field WhatField() {
  return {.key = "what",
          .label = "On the service's machine look at",
          .type = FieldType::Choice,
          .standard = "disk",
          .help = "This test looks at the machine that runs the monitoring service, whatever server it belongs to.",
          .choices = {{"disk", "Disk space"}, {"load", "Load"}, {"memory", "Memory"}, {"swap", "Swap space"}}};
}

std::vector<Field> DiskFields() {
  return {
      {.key = "path",
       .label = "Path",
       .standard = "/",
       .group = "Disk",
       .help = "Any file or folder on the file system, on the machine that runs the service.",
       .required = true,
       .enabledWhen = kit::Condition{"what", "disk"}},
      {.key = "mountPoint",
       .label = "Fails unless a file system is mounted there",
       .type = FieldType::Boolean,
       .standard = false,
       .group = "Disk",
       .help = "A disk that is not mounted would otherwise show the room of the one below it.",
       .enabledWhen = kit::Condition{"what", "disk"}},
  };
}

/// Limits that can be set while this is looked at.
std::vector<Field> LimitsWhen(const char* what, const char* group, std::initializer_list<LimitPair> pairs) {
  std::vector<Field> fields;
  for (LimitPair pair : pairs) {
    pair.group = group;
    pair.enabledWhen = kit::Condition{"what", what};
    for (Field& field : LimitFields(pair)) fields.push_back(std::move(field));
  }
  return fields;
}

LimitPair SharePair(const char* key, LimitField warning, LimitField critical) {
  return {.key = key, .warning = warning, .critical = critical, .unit = "%", .maximum = 100};
}

LimitPair LoadPair(const char* key, LimitField warning, LimitField critical) {
  return {.key = key,
          .warning = warning,
          .critical = critical,
          .unit = "a processor",
          .maximum = kMostLoad,
          .type = FieldType::Decimal};
}

std::vector<Field> DiskLimits() {
  return LimitsWhen("disk", "Disk",
                    {SharePair("free", {"Warning: free space below", 10}, {"Critical: free space below", 5}),
                     {.key = "freeGiB",
                      .warning = {"Warning: free space below", 0},
                      .critical = {"Critical: free space below", 0},
                      .unit = "GiB",
                      .maximum = kMostGiB,
                      .type = FieldType::Decimal},
                     SharePair("inodes", {"Warning: free inodes below", 10}, {"Critical: free inodes below", 5})});
}

std::vector<Field> LoadLimits() {
  return LimitsWhen("load", "Load average",
                    {LoadPair("load1", {"Warning: 1 minute above", 4}, {"Critical: 1 minute above", 8}),
                     LoadPair("load5", {"Warning: 5 minutes above", 2}, {"Critical: 5 minutes above", 4}),
                     LoadPair("load15", {"Warning: 15 minutes above", 1}, {"Critical: 15 minutes above", 2})});
}

std::vector<Field> MemoryLimits() {
  return LimitsWhen(
      "memory", "Memory",
      {SharePair("memory", {"Warning: available memory below", 10}, {"Critical: available memory below", 5})});
}

std::vector<Field> SwapLimits() {
  return LimitsWhen("swap", "Swap",
                    {SharePair("swap", {"Warning: free swap below", 20}, {"Critical: free swap below", 5})});
}

}  // namespace

const kit::Form& LocalModule::Fields() const {
  static const kit::Form form = kit::FormOf(
      "local", "Local machine properties",
      {{WhatField()}, DiskFields(), DiskLimits(), LoadLimits(), MemoryLimits(), SwapLimits(), {WarningFailsField()}});
  return form;
}

std::string LocalModule::About() const {
  return "Local machine " QUARL_MODULE_VERSION
         "\n\nLooks at disk space, load, memory or swap space of the machine that runs the monitoring "
         "service.\n\nPart of Quarl.";
}

}  // namespace quarl::checks
