#pragma once

#include <mutex>
#include <set>
#include <string>

#include "alerts/email/MailText.h"
#include "alerts/email/SmtpDelivery.h"
#include "kit/AlertModule.h"

namespace quarl::alerts {

/// Remembers who has had which mail, so that another attempt for the rest brings nobody a second copy. Forgets all
/// when it has grown large, and with the process. Any thread.
class MailMemory {
 public:
  bool Has(const std::string& mail, const std::string& address) const;
  void Add(const std::string& mail, const std::string& address);

 private:
  mutable std::mutex mutex_;
  std::set<std::pair<std::string, std::string>> had_;
};

class EmailModule : public kit::AlertModule {
 public:
  const kit::Form& Fields() const override;
  std::string Send(const kit::Event& event, const kit::Properties& properties) const override;
  std::string Judge(const kit::Properties& properties, std::string& key) const override;
  std::string About() const override;

 private:
  mutable MailMemory memory_;
};

/// The mail about an event. Throws std::runtime_error for addresses that are none.
Mail ComposeMail(const kit::Event& event, const kit::Properties& properties);

}  // namespace quarl::alerts
