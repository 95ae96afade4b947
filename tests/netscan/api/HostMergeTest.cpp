#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <algorithm>

#include "netscan/ScriptedScan.h"
#include "netscan/api/HostMerge.h"
#include "netscan/api/HostName.h"

namespace quarl::netscan {
namespace {

struct LabelCase {
  MachineRecord machine;
  const char* label;
  quint32 systemClass;
};

MachineRecord Machine(quint32 platform, qint32 major, qint32 minor, quint32 type, const char* name = "M") {
  return {platform, major, minor, type, QString::fromUtf8(name)};
}

// One list: the entries that carry a label over repeat the one before them.
const LabelCase kLabels[] = {
    {Machine(400, 4, 95, 0), "", kWindows9x},
    {Machine(500, 5, 1, 0x8000), "XP Server", kNtServer},
    {Machine(400, 4, 91, 0), "XP Server", kWindows9x},
    {Machine(500, 5, 0, 0x1003), "2000 Workstation", kNtWorkstation},
    {Machine(500, 5, -1, 0x8), "2000 Server", kNtServer},
    {Machine(500, 4, 0, 0), "NT Workstation", kNtWorkstation},
    {Machine(500, 10, 0, 0x10), "NT Server", kNtServer},
    {Machine(400, 4, -1, 0x8018), "NT Server", kWindows9x},
    {Machine(0, 4, 0, 0), "Windows 95", kWindows9x},
    {Machine(300, 4, 1, 0), "Windows 98", kWindows9x},
    {Machine(400, 4, 89, 0), "Windows 98", kWindows9x},
    {Machine(400, 4, 90, 0), "Windows ME", kWindows9x},
    {Machine(400, 4, 95, 0), "Windows ME", kWindows9x},
    {Machine(1012, 5, 2, 0), "XP Workstation", kNtWorkstation},  // holds all bits of 500
};

TEST(ServerList, LabelsFollowPlatformVersionAndType) {
  std::vector<MachineRecord> machines;
  for (const LabelCase& c : kLabels) machines.push_back(c.machine);
  const auto labels = LabelMachines(machines);
  ASSERT_EQ(labels.size(), machines.size());
  for (std::size_t row = 0; row < labels.size(); ++row) {
    EXPECT_EQ(labels[row].text, QLatin1String(kLabels[row].label)) << row;
    EXPECT_EQ(labels[row].systemClass, kLabels[row].systemClass) << row;
  }
}

TEST(ServerList, TextHoldsTheFilteredClassesInOrder) {
  const MachineRecord machines[] = {Machine(500, 5, 1, 0x8000, "ALPHA"), Machine(400, 4, 10, 0, "BETA"),
                                    Machine(500, 5, 0, 0, "GAMMA"),      Machine(400, 4, 99, 0, "DELTA"),
                                    Machine(500, 4, 0, 0, "E\u0100F"),   Machine(500, 4, 0, 0, "a,b|c\u012c\u017cd")};
  const std::pair<quint32, const char*> cases[] = {
      {0, ""},
      {8, ""},
      {1, "ALPHA|XP Server"},
      {4, "BETA|Windows 98,DELTA|2000 Workstation"},  // carried over from an entry that is filtered out
      {5, "ALPHA|XP Server,BETA|Windows 98,DELTA|2000 Workstation"},
      {2, "GAMMA|2000 Workstation,E|NT Workstation,a_b_c__d|NT Workstation"},
  };
  for (const auto& [filter, text] : cases) EXPECT_EQ(ServerListText(machines, filter), QLatin1String(text)) << filter;
  EXPECT_EQ(ServerListText({}, 7), QString());
}

TEST(HostName, HostileNamesBecomeHarmless) {
  const QString longName(5000, QLatin1Char('x'));
  const std::pair<QString, QString> cases[] = {{Q("  ALPHA \t"), Q("ALPHA")},
                                               {Q("a,b|c"), Q("a_b_c")},
                                               {Q("a\nb\x7f\u0086"), Q("a_b__")},
                                               {Q("a\u202eb\u2028c\ufeffd"), Q("a_b_c_d")},
                                               {QString(QChar(0xd800)) + QLatin1Char('a'), Q("\ufffda")},
                                               {Q("Łódź 😀"), Q("Łódź 😀")},
                                               {longName, longName.left(250) + Q("...")},
                                               {QString(), QString()}};
  for (const auto& [raw, clean] : cases) EXPECT_EQ(CleanName(raw), clean) << raw.left(30).toStdString();
  EXPECT_EQ(CleanName(QString(QChar(0)) + QLatin1Char('a')), Q("_a"));
}

Sighting Answered(const char* address) {
  Sighting sighting = Saw("echo", address);
  sighting.echo = EchoStatus::Answered;
  return sighting;
}

struct MergeCase {
  const char* title;
  std::vector<Sighting> sightings;
  std::vector<const char*> hosts;  // "name address finding"
};

TEST(HostMerge, OneMachineHasOneNameAndOneAddress) {
  const MergeCase cases[] = {
      {"nothing", {}, {}},
      {"one address",
       {Saw("NetBIOS", "10.0.0.5", "ALPHA"), Saw("mDNS", "10.0.0.5", "alpha", NameKind::Service), Answered("10.0.0.5")},
       {"ALPHA|10.0.0.5|Seen by NetBIOS, echo, mDNS"}},
      {"one name at two addresses, of which one answers",
       {Saw("NetBIOS", "10.0.0.5", "ALPHA"), Saw("mDNS", "10.0.0.9", "alpha", NameKind::Service), Answered("10.0.0.9")},
       {"ALPHA|10.0.0.9|Seen by NetBIOS, echo, mDNS; also at 10.0.0.5"}},
      {"one name at two addresses",
       {Saw("SMB", "10.0.0.9", "A"), Saw("SMB", "10.0.0.5", "A")},
       {"A|10.0.0.5|Seen by SMB; also at 10.0.0.9"}},
      {"a name without address joins",
       {Saw("x", "", "alpha"), Saw("SMB", "10.0.0.5", "ALPHA")},
       {"ALPHA|10.0.0.5|Seen by SMB, x"}},
      {"a name without address alone", {Saw("x", "", "beta")}, {"beta||Seen by x"}},
      {"neither name nor address", {Saw("x", ""), Saw("x", "", "  ")}, {}},
      {"devices may share a name",
       {Saw("WS", "10.0.0.5", "Printer", NameKind::Device), Saw("WS", "10.0.0.6", "Printer", NameKind::Device)},
       {"Printer|10.0.0.5|Seen by WS", "Printer|10.0.0.6|Seen by WS"}},
      {"a cut name is completed",
       {Saw("NetBIOS", "10.0.0.5", "VERYLONGHOSTNAM"),
        Saw("mDNS", "10.0.0.5", "verylonghostname-7", NameKind::Service)},
       {"verylonghostname-7|10.0.0.5|Seen by NetBIOS, mDNS"}},
      {"a looked-up name comes last",
       {Saw("DNS", "10.0.0.5", "a.example", NameKind::LookedUp), Saw("mDNS", "10.0.0.5", "z", NameKind::Service)},
       {"z|10.0.0.5|Seen by DNS, mDNS"}},
      {"hostile", {Saw("NetBIOS", "10.0.0.5", "A|B,C\n")}, {"A_B_C|10.0.0.5|Seen by NetBIOS"}},
      {"only blanks for a name", {Saw("NetBIOS", "10.0.0.5", " \n ")}, {"10.0.0.5|10.0.0.5|Seen by NetBIOS"}},
      {"in order by name, case ignored",
       {Saw("n", "10.0.0.7", "beta"), Saw("n", "10.0.0.6", "ALPHA"), Saw("n", "10.0.0.5"),
        Saw("n", "10.0.0.8", "Gamma")},
       {"10.0.0.5|10.0.0.5|Seen by n", "ALPHA|10.0.0.6|Seen by n", "beta|10.0.0.7|Seen by n",
        "Gamma|10.0.0.8|Seen by n"}},
  };
  for (const MergeCase& c : cases) {
    std::vector<Sighting> sightings = c.sightings;
    for (const bool reversed : {false, true}) {  // the order in which answers come in changes nothing
      if (reversed) std::reverse(sightings.begin(), sightings.end());
      QStringList hosts, expected;
      for (const FoundHost& host : ListHosts(MergeSightings(sightings)))
        hosts += host.machine.name + QLatin1Char('|') + host.address + QLatin1Char('|') + host.finding;
      for (const char* host : c.hosts) expected += QLatin1String(host);
      EXPECT_EQ(hosts.join(QLatin1Char('\n')).toStdString(), expected.join(QLatin1Char('\n')).toStdString()) << c.title;
    }
  }
}

TEST(HostMerge, OneNameAtThousandsOfAddressesIsSoonMerged) {
  std::vector<Sighting> flood(10000, Saw("NetBIOS", "10.0.0.5", "FIFTEENLETTERSX"));
  for (quint32 host = 0; host < flood.size(); ++host) flood[host].address = htonl(0x0a000001 + host);
  QElapsedTimer timer;
  timer.start();
  const auto hosts = ListHosts(MergeSightings(flood));
  EXPECT_LT(timer.elapsed(), 5000);
  ASSERT_EQ(hosts.size(), 1U);
  EXPECT_LT(hosts[0].finding.size(), 200);
}

TEST(HostMerge, RecordsSayNoMoreThanIsKnown) {
  Sighting smb = Saw("SMB", "10.0.0.5", "ALPHA");
  smb.version = {10, 0, 19041};
  smb.type = kServesFiles;
  Sighting announced = Saw("announcement", "10.0.0.5", "ALPHA");
  announced.version = {5, 1, 0};
  announced.type = 0x9003;
  Sighting old = Saw("announcement", "10.0.0.6", "OLD");
  old.platform = kDosPlatform;
  old.version = {4, 10, 0};
  Sighting samba = smb;
  samba.address = old.address;
  samba.name = old.name;
  samba.version = {4, 9, 0};
  std::vector sightings{announced, smb, old, samba, Saw("echo", "10.0.0.4")};
  EXPECT_EQ(ListHosts(MergeSightings(sightings))[2].machine,
            ListHosts(MergeSightings(std::vector(sightings.rbegin(), sightings.rend())))[2].machine);
  sightings.erase(sightings.begin() + 3);
  const auto hosts = ListHosts(MergeSightings(sightings));
  ASSERT_EQ(hosts.size(), 3U);
  EXPECT_EQ(hosts[0].machine, (MachineRecord{500, 0, 0, 0, Q("10.0.0.4")}));
  EXPECT_EQ(hosts[1].machine, (MachineRecord{500, 10, 0, 0x9003, Q("ALPHA")})) << "the exact version wins";
  EXPECT_EQ(hosts[1].label.text, Q("NT Server"));
  EXPECT_EQ(hosts[2].label.text, Q("Windows 98"));
}

}  // namespace
}  // namespace quarl::netscan
