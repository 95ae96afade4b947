#pragma once

#include "kit/TestModule.h"

namespace quarl::checks {

/// Asks a web server for one page and judges status, content, time and certificate.
class HttpModule : public kit::TestModule {
 public:
  const kit::Form& Fields() const override;
  kit::CheckOutcome Check(const kit::Server& server, const kit::Properties& properties,
                          std::chrono::milliseconds limit) const override;
  std::string Judge(const kit::Properties& properties, std::string& key) const override;
  int16_t BufferSize() const override { return 16384; }
  std::string About() const override;
};

}  // namespace quarl::checks
