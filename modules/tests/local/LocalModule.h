#pragma once

#include "kit/TestModule.h"
#include "tests/local/DiskProbe.h"
#include "tests/local/SystemFigures.h"

namespace quarl::checks {

/// Looks at disk, load, memory or swap of the machine that runs this process.
class LocalModule : public kit::TestModule {
 public:
  explicit LocalModule(SystemFigures figures = SystemFigures(), DiskProbe::Read readDisk = &ReadDiskSpace)
      : figures_(std::move(figures)), disks_(std::move(readDisk)) {}
  const kit::Form& Fields() const override;
  kit::CheckOutcome Check(const kit::Server& server, const kit::Properties& properties,
                          std::chrono::milliseconds limit) const override;
  std::string Judge(const kit::Properties& properties, std::string& key) const override;
  std::string About() const override;

 private:
  SystemFigures figures_;
  mutable DiskProbe disks_;
};

}  // namespace quarl::checks
