#include "kit/Host.h"

#include <atomic>
#include <cstddef>

#include "kit/Text.h"

namespace quarl::kit {
namespace {

constexpr int16_t kNotShown = -1;
std::atomic<const QuarlHost*> keptHost{nullptr};

/// A member of the host; nullptr when this host has none.
template <typename Member>
Member Offered(Member QuarlHost::*member, std::size_t end) {
  const QuarlHost* host = keptHost.load();
  return host == nullptr || host->size < end ? nullptr : host->*member;
}

}  // namespace

int16_t KeepHost(const QuarlHost* host) noexcept {
  keptHost.store(host);
  return 0;
}

void Log(Severity severity, const std::string& line) {
  const auto log = Offered(&QuarlHost::Log, offsetof(QuarlHost, Log) + sizeof(QuarlHost::Log));
  if (log != nullptr) log(static_cast<int16_t>(severity), OneLine(line).c_str());
}

int16_t ShowForm(const std::string& form, QuarlBuffer values, const QuarlFormCalls& calls) {
  const auto show = Offered(&QuarlHost::ShowForm, offsetof(QuarlHost, ShowForm) + sizeof(QuarlHost::ShowForm));
  return show == nullptr ? kNotShown : show(form.c_str(), values, &calls);
}

int16_t ShowText(const std::string& title, const std::string& text) {
  const auto show = Offered(&QuarlHost::ShowText, offsetof(QuarlHost, ShowText) + sizeof(QuarlHost::ShowText));
  return show == nullptr ? kNotShown : show(title.c_str(), text.c_str());
}

}  // namespace quarl::kit
