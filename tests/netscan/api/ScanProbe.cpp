// Looks for machines as the user and in the network that the test gives it.
//   scan_probe scan HELPER            prints a line for each machine, then for each note, then how long it took
//   scan_probe list HELPER FILTER...  prints what EnumerateServers() gives for each filter
#include <QCoreApplication>
#include <cstdio>

#include "netscan/api/clsNetAPI.h"

using namespace quarl::netscan;

namespace {

void PrintHost(const FoundHost& host) {
  static constexpr const char* kUnlisted[] = {"listed", "no address", "no echo"};
  std::printf("host\t%s\t%s\t%s\t%s\t%s\n", host.machine.name.toUtf8().constData(),
              host.label.text.toUtf8().constData(), host.address.toUtf8().constData(),
              kUnlisted[static_cast<int>(host.unlisted)], host.finding.toUtf8().constData());
}

void Scan(const QString& helper) {
  ScanSetup setup = ScanSetup::OfThisMachine();
  setup.openEcho = [helper] { return OpenEchoChannel(helper); };
  const auto begin = std::chrono::steady_clock::now();
  HostScan scan(std::move(setup));
  scan.Start();
  const ScanResult result = scan.Result();
  const auto time = std::chrono::steady_clock::now() - begin;
  for (const FoundHost& host : result.hosts) PrintHost(host);
  for (const QString& note : result.notes) std::printf("note\t%s\n", note.toUtf8().constData());
  std::printf("%s\t%lld\n", result.complete ? "complete" : "incomplete",
              static_cast<long long>(time / std::chrono::milliseconds(1)));
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  const QStringList arguments = app.arguments();
  if (arguments.size() < 3) return 2;
  if (arguments[1] == QStringLiteral("scan")) Scan(arguments[2]);
  for (const QString& filter : arguments.mid(3))
    std::printf("%s\n", clsNetAPI(arguments[2]).EnumerateServers(filter.toInt()).toUtf8().constData());
  return 0;
}
