#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <atomic>
#include <condition_variable>

#include "netscan/ScriptedScan.h"
#include "netscan/api/clsNetAPI.h"

namespace quarl::netscan {
namespace {

using namespace std::chrono_literals;

// A clock that runs fifty times as fast, so that a time-out is over soon.
ScanLoop::Clock::time_point FastTime() {
  static const auto start = ScanLoop::Clock::now();
  return start + 50 * (ScanLoop::Clock::now() - start);
}

ScanSetup SetupFor(ScriptedScan network) {
  network.silent = {inet_addr("10.0.0.6"), inet_addr("10.0.0.7")};
  ScanSetup setup = network.Setup();
  setup.now = &FastTime;
  setup.own = {inet_addr("10.0.0.1")};
  setup.resolver.name = [](const QString& name) {
    return name == Q("DELTA") ? std::optional(inet_addr("10.0.0.8")) : std::nullopt;
  };
  setup.resolver.address = [](in_addr_t address) {
    return address == inet_addr("10.0.0.7") ? Q("seven.example") : QString();
  };
  return setup;
}

ScriptedScan Endless() {
  ScriptedScan network{{Saw("list", "10.0.0.5", "ALPHA")}};
  *network.held = true;
  return network;
}

ScanResult Scan(ScanSetup setup) {
  HostScan scan(std::move(setup));
  scan.Start();
  return scan.Result();
}

const std::vector<Sighting> kNeighbourhood = {
    Saw("list", "10.0.0.5", "ALPHA"), Saw("list", "10.0.0.6", "BETA"), Saw("list", "10.0.0.7", ""),
    Saw("list", "", "DELTA"),         Saw("list", "", "GONE"),         Saw("list", "10.0.0.1", "OWN"),
    Saw("list", "127.0.0.1", "OWN2"), Saw("list", "224.0.0.1", "ALL"), Saw("list", "203.0.113.9", "FAR")};

TEST(HostScanTest, ListsWhoAnswersAndSaysWhyOthersAreNot) {
  const ScriptedScan network{kNeighbourhood};
  const ScanResult result = Scan(SetupFor(network));
  EXPECT_TRUE(result.complete);
  QStringList hosts;
  for (const FoundHost& host : result.hosts)
    hosts += host.machine.name + QLatin1Char('|') + host.address + QLatin1Char('|') + host.Reason();
  EXPECT_EQ(hosts.join(QLatin1Char('\n')).toStdString(),
            "ALPHA|10.0.0.5|\n"
            "BETA|10.0.0.6|BETA (10.0.0.6) was seen, but did not answer the echo.\n"
            "DELTA|10.0.0.8|\n"
            "GONE||GONE was seen, but its address is not known.\n"
            "seven.example|10.0.0.7|seven.example (10.0.0.7) was seen, but did not answer the echo.");
  EXPECT_EQ(network.heard->size(), 3U) << "each address once, our own and those of other networks never";
  EXPECT_EQ(ListedHosts(result, kNtWorkstation).size(), 2U);
  EXPECT_TRUE(ListedHosts(result, kNtServer | kWindows9x).empty());
}

TEST(HostScanTest, WithoutAWayForEchoesEveryAddressCounts) {
  ScanSetup setup = SetupFor({kNeighbourhood});
  setup.openEcho = [] { return std::unique_ptr<EchoChannel>(); };
  EXPECT_EQ(ListedHosts(Scan(std::move(setup)), 7).size(), 4U);
}

TEST(HostScanTest, EnumerationListsEveryMachineThatWasSeen) {
  EXPECT_EQ(clsNetAPI().EnumerateServers(2, SetupFor({kNeighbourhood})).toStdString(),
            "ALPHA|NT Workstation,BETA|NT Workstation,DELTA|NT Workstation,GONE|NT Workstation,"
            "seven.example|NT Workstation");
  EXPECT_EQ(clsNetAPI().EnumerateServers(0, SetupFor({kNeighbourhood})), QString());
  EXPECT_EQ(clsNetAPI().EnumerateServers(7, ScanSetup{}), QString()) << "nowhere to look";
}

TEST(HostScanTest, ASourceThatNeverEndsIsGivenUp) {
  ScanSetup setup = SetupFor(Endless());
  const ScanResult result = Scan(std::move(setup));  // ten seconds of the fast clock
  EXPECT_FALSE(result.complete);
  EXPECT_EQ(ListedHosts(result, 7).size(), 1U) << "what was found stays found";
}

TEST(HostScanTest, CancelEndsItSoonAndProgressSaysSo) {
  ScanSetup setup = SetupFor(Endless());
  setup.now = &ScanLoop::Clock::now;
  HostScan scan(std::move(setup));
  std::mutex mutex;
  std::condition_variable changed;
  int calls = 0;
  scan.Start([&] {
    const std::lock_guard lock(mutex);
    ++calls;
    changed.notify_all();
  });
  const auto await = [&](const auto& condition) {
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, 30s, condition);
  };
  ASSERT_TRUE(await([&] { return scan.Progress().hosts == 1; }));
  EXPECT_EQ(scan.Progress().sourcesDone, 0);
  EXPECT_EQ(scan.Progress().sources, 1);
  EXPECT_FALSE(scan.Progress().finished);
  QElapsedTimer timer;
  timer.start();
  scan.Cancel();
  ASSERT_TRUE(await([&] { return scan.Progress().finished; }));
  EXPECT_LT(timer.elapsed(), 5000);
  EXPECT_FALSE(scan.Result().complete);
}

TEST(HostScanTest, AFloodIsBounded) {
  std::vector<Sighting> flood;
  for (quint32 host = 0; host < 5000; ++host) {
    Sighting sighting = Saw("list", "10.0.0.5", "N");
    sighting.address = htonl(0x0a000200 + host);
    sighting.name += QString::number(host);
    flood.push_back(sighting);
  }
  ScanSetup setup = SetupFor({flood});
  setup.subnets[0].mask = inet_addr("255.0.0.0");
  setup.bounds.hosts = 100;
  EXPECT_EQ(Scan(setup).hosts.size(), 100U);

  for (Sighting& sighting : flood) sighting.address = inet_addr("10.0.0.5");
  flood.push_back(Saw("list", "10.0.0.6", "BETA"));
  setup.makeSources = SetupFor({flood}).makeSources;
  EXPECT_EQ(Scan(setup).hosts.size(), 2U) << "one that tells more and more leaves room for others";
}

TEST(HostScanTest, WhatWasNotAskedIsNoted) {
  ScanSetup setup = SetupFor({});
  setup.subnets = {{"a", 1, inet_addr("10.1.6.3"), inet_addr("255.255.0.0"), 0},
                   {"b", 2, inet_addr("10.2.6.3"), inet_addr("255.255.252.0"), 0}};
  setup.bounds.addresses = 1500;
  const QString notes = Scan(std::move(setup)).notes.join(QLatin1Char('\n'));
  EXPECT_TRUE(notes.contains(Q("around 10.1.6.3 only"))) << notes.toStdString();
  EXPECT_TRUE(notes.contains(Q("Only 1500 addresses"))) << notes.toStdString();
  EXPECT_EQ(notes.count(QLatin1Char('\n')), 2);
}

TEST(HostScanTest, ALookUpThatHangsIsNotWaitedFor) {
  ScanSetup setup = SetupFor({{Saw("list", "", "SLOW"), Saw("list", "10.0.0.5", "ALPHA")}});
  const auto gate = std::make_shared<std::mutex>();
  const std::lock_guard held(*gate);
  setup.resolver.name = [gate](const QString&) {
    const std::lock_guard lock(*gate);
    return std::optional(inet_addr("10.0.0.8"));
  };
  const ScanResult result = Scan(std::move(setup));
  ASSERT_EQ(result.hosts.size(), 2U);
  EXPECT_EQ(result.hosts[1].unlisted, Unlisted::NoAddress);
}

TEST(HostScanTest, AddressesOfHostsAndTheMessageForNone) {
  QStringList told;
  const clsNetAPI api(QString(), [&](const QString& message) { told += message; });
  EXPECT_EQ(api.GetIPAddress(Q("localhost")), Q("127.0.0.1"));
  EXPECT_EQ(api.GetIPAddress(Q("192.168.0.5")), Q("192.168.0.5"));
  EXPECT_TRUE(told.isEmpty());
  for (const QString& name : {QString(), Q("no such host"), Q("localhost") + QChar()}) {
    EXPECT_EQ(api.GetIPAddress(name), QString());
    EXPECT_EQ(told, QStringList(Q("Windows Sockets are not responding. Unable to successfully get Host Name.")));
    told.clear();
  }
}

struct SweepCase {
  const char* own;
  const char* mask;
  std::size_t count;
  const char* first;
  const char* last;
};

TEST(Subnets, SweepsAskEveryHostUpToATwentyTwoBitNet) {
  const SweepCase cases[] = {{"10.1.2.3", "255.255.255.0", 253, "10.1.2.1", "10.1.2.254"},
                             {"10.1.2.3", "255.255.252.0", 1021, "10.1.0.1", "10.1.3.254"},
                             {"10.1.6.3", "255.255.0.0", 1023, "10.1.4.0", "10.1.7.255"},
                             {"10.1.2.1", "255.255.255.252", 1, "10.1.2.2", "10.1.2.2"},
                             {"255.255.255.250", "255.255.255.0", 253, "255.255.255.1", "255.255.255.254"}};
  for (const SweepCase& c : cases) {
    const Subnet subnet{"eth0", 1, inet_addr(c.own), inet_addr(c.mask), 0};
    const auto addresses = SweepAddresses({subnet, subnet}, 5000);
    ASSERT_EQ(addresses.size(), c.count) << c.own;
    EXPECT_EQ(addresses.front(), inet_addr(c.first)) << c.own;
    EXPECT_EQ(addresses.back(), inet_addr(c.last)) << c.own;
    EXPECT_EQ(SweepAddresses({subnet}, 1).size(), 1U);
  }
}

}  // namespace
}  // namespace quarl::netscan
