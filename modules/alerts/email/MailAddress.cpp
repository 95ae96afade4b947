#include "alerts/email/MailAddress.h"

#include <algorithm>

#include "kit/Text.h"

namespace quarl::alerts {
namespace {

bool IsAlphanumeric(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool HasOnly(std::string_view text, std::string_view marks) {
  return std::all_of(text.begin(), text.end(),
                     [&](char c) { return IsAlphanumeric(c) || marks.find(c) != std::string_view::npos; });
}

/// Parts with single dots between them.
bool IsDotted(std::string_view text, std::string_view marks) {
  return !text.empty() && text.front() != '.' && text.back() != '.' && text.find("..") == std::string_view::npos &&
         HasOnly(text, marks);
}

bool IsDomain(std::string_view domain) {
  if (domain.size() > 2 && domain.front() == '[' && domain.back() == ']') {
    return HasOnly(domain.substr(1, domain.size() - 2), ".:");
  }
  return domain.size() <= 255 && IsDotted(domain, ".-");
}

std::string FaultOf(const std::string& address) {
  const std::size_t at = address.rfind('@');
  if (at == std::string::npos) return '"' + address + "\" is no mail address: it has no @.";
  const std::string_view local = std::string_view(address).substr(0, at);
  const std::string_view domain = std::string_view(address).substr(at + 1);
  if (local.size() > 64 || !IsDotted(local, ".!#$%&'*+-/=?^_`{|}~")) {
    return '"' + address + "\" is no mail address: what stands before the @ is not allowed.";
  }
  if (!IsDomain(domain)) {
    return '"' + address +
           "\" is no mail address: what stands behind the @ is no domain. Other letters than a to z are written in "
           "the form that begins with xn--.";
  }
  return {};
}

}  // namespace

std::string MailAddress::Domain() const {
  return address.substr(address.rfind('@') + 1);
}

MailAddress ReadMailAddress(std::string_view text, std::string& fault) {
  const std::string line = kit::OneLine(text);
  MailAddress mailbox{{}, line};
  if (const std::size_t open = line.rfind('<'); open != std::string::npos && line.back() == '>') {
    mailbox.name = kit::OneLine(line.substr(0, open));
    mailbox.address = line.substr(open + 1, line.size() - open - 2);
  }
  std::string& name = mailbox.name;
  if (name.size() >= 2 && name.front() == '"' && name.back() == '"')
    name = kit::OneLine(name.substr(1, name.size() - 2));
  fault = FaultOf(mailbox.address);
  return mailbox;
}

std::vector<MailAddress> ReadMailAddresses(const std::vector<std::string>& texts, std::string& fault) {
  std::vector<MailAddress> mailboxes;
  fault.clear();
  for (const std::string& text : texts) {
    if (kit::OneLine(text).empty()) continue;
    const MailAddress mailbox = ReadMailAddress(text, fault);
    if (!fault.empty()) return {};
    const auto same = [&](const MailAddress& other) { return other.address == mailbox.address; };
    if (std::none_of(mailboxes.begin(), mailboxes.end(), same)) mailboxes.push_back(mailbox);
  }
  return mailboxes;
}

}  // namespace quarl::alerts
