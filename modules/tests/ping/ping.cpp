#include <QString>
#include <algorithm>

#include "Channels.h"
#include "PingSettings.h"
#include "Verdict.h"
#include "kit/Error.h"
#include "kit/TestModule.h"
#include "netscan/api/Echo.h"

namespace quarl::ping {
namespace {

using netscan::EchoResult;
using netscan::EchoStatus;
using std::chrono::milliseconds;

constexpr std::size_t kUnderWay = 5;  // a host that answers nothing costs a time-out for each so many echoes
constexpr milliseconds kReserve{200};

/// The echoes' limits, within what the caller has time for.
netscan::EchoLimits LimitsOf(const Settings& settings, milliseconds limit) {
  const auto rounds = static_cast<std::int64_t>((settings.count + kUnderWay - 1) / kUnderWay);
  const milliseconds possible = std::max((limit - kReserve) / rounds, milliseconds(1));
  return {std::min(settings.timeOut, possible), kUnderWay};
}

class PingModule final : public kit::TestModule {
 public:
  const kit::Form& Fields() const override { return PingForm(); }

  kit::CheckOutcome Check(const kit::Server& server, const kit::Properties& properties,
                          milliseconds limit) const override {
    Settings settings = ReadSettings(properties);
    const auto address = netscan::EchoAddress(QString::fromStdString(server.address));
    if (!address) throw kit::Error("\"" + server.address + "\" is no IPv4 address.");
    const netscan::EchoLimits limits = LimitsOf(settings, limit);
    settings.timeOut = limits.timeOut;
    const std::vector<in_addr_t> addresses(settings.count, *address);
    std::vector<EchoResult> echoes(settings.count);
    auto line = lines_.Take();
    line->session.AskAll(addresses, limits, [&](std::size_t at, const EchoResult& result) { echoes[at] = result; });
    const bool works = std::any_of(echoes.begin(), echoes.end(),
                                   [](const EchoResult& echo) { return echo.status == EchoStatus::Answered; });
    lines_.Give(std::move(line), works);
    return JudgeEchoes(echoes, settings);
  }

  std::string Judge(const kit::Properties& properties, std::string& key) const override {
    return JudgeSettings(ReadSettings(properties), key);
  }

  std::string About() const override {
    return "Ping " QUARL_MODULE_VERSION
           "\n\nSends ICMP echoes to a server and judges how many are answered and how fast.\n\nPart of Quarl.";
  }

 private:
  mutable Lines lines_;
};

}  // namespace
}  // namespace quarl::ping

QUARL_TEST_MODULE(quarl::ping::PingModule)
