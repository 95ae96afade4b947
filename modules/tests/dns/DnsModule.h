#pragma once

#include "kit/TestModule.h"

namespace quarl::checks {

/// Asks a DNS server for the records of one name and compares them with what is expected.
class DnsModule : public kit::TestModule {
 public:
  const kit::Form& Fields() const override;
  kit::CheckOutcome Check(const kit::Server& server, const kit::Properties& properties,
                          std::chrono::milliseconds limit) const override;
  std::string Judge(const kit::Properties& properties, std::string& key) const override;
  std::string About() const override;
};

}  // namespace quarl::checks
