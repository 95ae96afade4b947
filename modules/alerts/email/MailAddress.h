#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quarl::alerts {

/// One mailbox: "ops@example.org" or "Operations <ops@example.org>".
struct MailAddress {
  std::string name;  ///< UTF-8, one line; may be empty
  std::string address;

  std::string Domain() const;
};

/// Reads one mailbox as a person writes it. fault gets a sentence, and is "" when the mailbox is good. Addresses are
/// plain: letters, digits and the usual marks, one @, no quotes, no comments.
MailAddress ReadMailAddress(std::string_view text, std::string& fault);

/// The same for several; the first fault counts. Addresses that come again are left out.
std::vector<MailAddress> ReadMailAddresses(const std::vector<std::string>& texts, std::string& fault);

}  // namespace quarl::alerts
