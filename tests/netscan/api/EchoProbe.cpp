// Runs the echo as a user and in a network that the test gives it.
//   echo_probe ping HELPER TEXT...         prints what Ping() gives for each text
//   echo_probe sweep HELPER MS ADDRESS...  prints the method, then the status of each address, then the time it took
//   (MS: time-out)
#include <QCoreApplication>
#include <cstdio>

#include "netscan/api/clsNetAPI.h"

using namespace quarl::netscan;

namespace {

void PingEach(const QString& helper, const QStringList& texts) {
  for (const QString& text : texts) std::printf("%d\n", clsNetAPI(helper).Ping(text));
}

void Sweep(const QString& helper, const QStringList& texts) {
  const auto channel = OpenEchoChannel(helper);
  if (!channel) {
    std::puts("none");
    return;
  }
  static constexpr const char* kNames[] = {"datagram", "raw", "helper"};
  std::puts(kNames[static_cast<int>(channel->Method())]);
  std::vector<in_addr_t> addresses;
  for (const QString& text : texts.mid(1)) addresses.push_back(EchoAddress(text).value());
  std::vector<EchoStatus> statuses(addresses.size());
  const auto begin = std::chrono::steady_clock::now();
  EchoSession(*channel).AskAll(addresses, {},
                               [&](std::size_t index, const EchoResult& result) { statuses[index] = result.status; });
  const auto time = std::chrono::steady_clock::now() - begin;
  for (const EchoStatus status : statuses) std::printf("%d\n", static_cast<int>(status));
  std::printf("%lld\n", static_cast<long long>(time / std::chrono::milliseconds(1)));
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  const QStringList arguments = app.arguments();
  if (arguments.size() < 3) return 2;
  (arguments[1] == QStringLiteral("ping") ? PingEach : Sweep)(arguments[2], arguments.mid(3));
  return 0;
}
