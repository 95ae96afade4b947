#pragma once

#include "kit/TestModule.h"

namespace quarl::checks {

/// Runs a program that keeps the Monitoring Plugins' convention.
class PluginModule : public kit::SteppedTestModule {
 public:
  const kit::Form& Fields() const override;
  kit::Task<kit::CheckOutcome> Begin(const kit::Server& server, const kit::Properties& properties,
                                     std::chrono::milliseconds limit) const override;
  std::string Judge(const kit::Properties& properties, std::string& key) const override;
  int16_t BufferSize() const override { return 16384; }
  int16_t AtOnce() const override { return 64; }  // a program takes megabytes
  std::string About() const override;
};

}  // namespace quarl::checks
