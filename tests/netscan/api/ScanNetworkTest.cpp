#include <gtest/gtest.h>

#include <QFile>

#include "netscan/api/Street.h"
#include "netscan/api/TestPackets.h"

namespace quarl::netscan {
namespace {

constexpr const char* kClosed = "1 0";
constexpr const char* kOpen = "0 2147483647";

// Ten machines with the programs that real ones run. Built once; every test starts from the same settings.
class ScanNetwork : public ::testing::Test {
 protected:
  static void SetUpTestSuite();
  static void TearDownTestSuite() { street_.reset(); }
  void SetUp() override {
    street_->Near().Set("ping_group_range", kOpen);
    street_->Near().Set("ip_unprivileged_port_start", "1024");
    if (!street_->Missing().isEmpty()) GTEST_SKIP() << street_->Missing().toStdString();
    ASSERT_EQ(street_->Failure().toStdString(), "");
  }

  static void StartSamba(int number, const QByteArray& name, const QByteArray& more);
  static void StartNameResponder(int number);
  static void StartWebResponders(int number, int other);
  static void StartShell(int number);

  struct Seen {
    QMap<QString, QStringList> hosts;  // name: label, address, "listed" or why not, finding
    QStringList notes;
    bool complete = false;
    int milliseconds = 0;
    QString errors;
  };
  static Seen Scan(const QString& helper = Q("/no/helper"));

  static std::unique_ptr<Street> street_;
  static QString probe_;
  static NetSpace* old_;  ///< the machine that may announce itself
};

std::unique_ptr<Street> ScanNetwork::street_;
QString ScanNetwork::probe_;
NetSpace* ScanNetwork::old_ = nullptr;

QString WriteFile(const QString& path, const QByteArray& content) {
  QFile file(path);
  EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
  return path;
}

// The two programs have a folder each: in there they go by the number of their process, which both call 1.
void ScanNetwork::StartSamba(int number, const QByteArray& name, const QByteArray& more) {
  NetSpace& host = street_->AddHost(number);
  for (const char* program : {"nmbd", "smbd"}) {
    const QByteArray folder = street_->NewFolder().toUtf8();
    QByteArray config = "[global]\nworkgroup = LAB\nnetbios name = " + name + "\ndisable spoolss = yes\n" + more;
    for (const char* kind : {"lock directory", "state directory", "cache directory", "pid directory", "private dir"})
      config += QByteArray(kind) + " = " + folder + "\n";
    config += "ncalrpc dir = " + folder + "/rpc\nlog file = " + folder + "/log\n";
    const QString file = WriteFile(QString::fromUtf8(folder) + Q("/smb.conf"), config);
    QProcess& process = street_->Start(host, QLatin1String(program),
                                       {Q("-F"), Q("--no-process-group"), Q("--debug-stdout"), Q("-s"), file});
    qstrcmp(program, "smbd") == 0 ? street_->AwaitPort(process, "tcp", 445) : street_->AwaitPort(process, "udp", 137);
  }
}

void ScanNetwork::StartNameResponder(int number) {
  const QString file = WriteFile(street_->NewFolder() + Q("/avahi.conf"),
                                 "[server]\nhost-name=mike\nuse-ipv6=no\nenable-dbus=no\n"
                                 "[wide-area]\nenable-wide-area=no\n[publish]\npublish-workstation=no\n");
  QProcess& program = street_->Start(street_->AddHost(number), Q("avahi-daemon"),
                                     {Q("--no-drop-root"), Q("--no-chroot"), Q("--no-rlimits"), Q("-f"), file});
  street_->AwaitWords(program, "startup complete");
}

// One answers the probe with its location, the other only when it is asked for it.
void ScanNetwork::StartWebResponders(int number, int other) {
  const QStringList group{Q("-4"), Q("-n"), Q("xray"), Q("-w"), Q("LAB")};
  QProcess& second = street_->Start(street_->AddHost(other), Q("wsdd"), group);
  QProcess& first = street_->Start(street_->AddHost(number), Q("wsdd2"),
                                   {Q("-4"), Q("-w"), Q("-H"), Q("whisky"), Q("-N"), Q("WHISKY"), Q("-G"), Q("LAB")});
  street_->AwaitPort(first, "tcp", 3702);
  street_->AwaitPort(second, "tcp", 5357);
}

void ScanNetwork::StartShell(int number) {
  const QString key = street_->NewFolder() + Q("/key");
  QProcess::execute(Q("ssh-keygen"), {Q("-q"), Q("-t"), Q("ed25519"), Q("-N"), QString(), Q("-f"), key});
  QProcess& program =
      street_->Start(street_->AddHost(number), Q("sshd"), {Q("-D"), Q("-e"), Q("-f"), Q("/dev/null"), Q("-h"), key});
  street_->AwaitPort(program, "tcp", 22);
}

void ScanNetwork::SetUpTestSuite() {
  street_ = std::make_unique<Street>();
  probe_ = street_->Install(Q(SCAN_PROBE), Q("scan_probe"));
  StartSamba(10, "ALPHA", {});
  StartSamba(11, "DELTA", "server role = classic primary domain controller\n");
  StartNameResponder(12);
  StartWebResponders(13, 16);
  StartShell(14);
  street_->AddHost(15).Set("icmp_echo_ignore_all", "1");
  for (const int number : {17, 18}) street_->AddHost(number);
  old_ = &street_->AddHost(19);
  const auto names = [](const char* address) { return QStringList{Q("nmblookup"), Q("-A"), QLatin1String(address)}; };
  street_->AwaitCommand(names("10.88.0.10"), "<20>");
  street_->AwaitCommand(names("10.88.0.11"), "<1c>");
}

ScanNetwork::Seen ScanNetwork::Scan(const QString& helper) {
  const auto outcome = street_->Near().Run(TestUser::Nobody, probe_, {Q("scan"), helper});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
  Seen seen;
  seen.errors = outcome.errors;
  for (const QString& line : outcome.output) {
    const QStringList fields = line.split(QLatin1Char('\t'));
    if (fields[0] == QLatin1String("host")) {
      EXPECT_FALSE(seen.hosts.contains(fields[1])) << "twice: " << fields[1].toStdString();
      seen.hosts[fields[1]] = fields.mid(2);
    } else if (fields[0] == QLatin1String("note")) {
      seen.notes += fields[1];
    } else {
      seen.complete = fields[0] == QLatin1String("complete");
      seen.milliseconds = fields[1].toInt();
    }
  }
  return seen;
}

struct HostRow {
  const char* name;
  const char* label;
  const char* address;
  const char* unlisted;
  std::vector<const char*> finding;
};

const HostRow kStreet[] = {
    {"ALPHA", "NT Workstation", "10.88.0.10", "listed", {"NetBIOS (workgroup LAB)", "SMB (6.1 build 0)"}},
    {"DELTA", "NT Server", "10.88.0.11", "listed", {"NetBIOS (workgroup LAB)", "SMB (6.1 build 0)"}},
    {"mike", "NT Workstation", "10.88.0.12", "listed", {"mDNS"}},
    {"WHISKY", "NT Workstation", "10.88.0.13", "listed", {"WS-Discovery (workgroup LAB)"}},
    {"10.88.0.14", "NT Workstation", "10.88.0.14", "listed", {}},
    {"10.88.0.15", "NT Workstation", "10.88.0.15", "no echo", {}},
    {"XRAY", "NT Workstation", "10.88.0.16", "listed", {"WS-Discovery (workgroup LAB)"}},
    {"10.88.0.17", "NT Workstation", "10.88.0.17", "listed", {}},
    {"10.88.0.18", "NT Workstation", "10.88.0.18", "listed", {}},
    {"10.88.0.19", "NT Workstation", "10.88.0.19", "listed", {}},
};

void ExpectStreet(const QMap<QString, QStringList>& hosts, bool withEcho) {
  EXPECT_EQ(hosts.size(), std::size(kStreet)) << hosts.keys().join(QLatin1Char(' ')).toStdString();
  for (const HostRow& row : kStreet) {
    const QStringList host = hosts.value(QLatin1String(row.name));
    ASSERT_EQ(host.size(), 4) << row.name << " was not found";
    EXPECT_EQ(host[0], QLatin1String(row.label)) << row.name;
    EXPECT_EQ(host[1], QLatin1String(row.address)) << row.name;
    EXPECT_EQ(host[2], QLatin1String(withEcho ? row.unlisted : "listed")) << row.name;
    for (const char* finding : row.finding)
      EXPECT_TRUE(host[3].contains(QLatin1String(finding))) << host[3].toStdString();
    EXPECT_EQ(host[3].contains(QLatin1String("echo")), withEcho && host[2] == QLatin1String("listed"));
  }
}

TEST_F(ScanNetwork, AnOrdinaryUserFindsEveryMachineAsItWasSetUp) {
  const Seen first = Scan(), second = Scan();  // the second meets a kernel that knows its neighbours
  for (const Seen& seen : {first, second}) {
    EXPECT_TRUE(seen.complete);
    ExpectStreet(seen.hosts, true);
    EXPECT_LT(seen.milliseconds, 15000);
  }
  std::printf("a /24 with ten machines: %d ms, once more: %d ms\n", first.milliseconds, second.milliseconds);
}

TEST_F(ScanNetwork, WithoutEchoesEveryMachineCountsAsAnswering) {
  street_->Near().Set("ping_group_range", kClosed);
  const Seen seen = Scan();
  EXPECT_TRUE(seen.complete);
  ExpectStreet(seen.hosts, false);
  EXPECT_EQ(seen.errors.count(QLatin1Char('\n')), 1) << seen.errors.toStdString();
}

TEST_F(ScanNetwork, WhereTheKernelForbidsEchoesTheHelperSendsThem) {
  const QString helper = street_->Install(Q(QUARL_LAYOUT_DIR "/quarl-echo"), Q("quarl-echo"));
  if (const QString reason = GiveCapability(helper); !reason.isEmpty()) GTEST_SKIP() << reason.toStdString();
  street_->Near().Set("ping_group_range", kClosed);
  const Seen seen = Scan(helper);
  EXPECT_TRUE(seen.complete);
  ExpectStreet(seen.hosts, true);
}

TEST_F(ScanNetwork, TheServerListIsFilteredByClass) {
  const auto outcome = street_->Near().Run(TestUser::Nobody, Q("sh"),
                                           {Q("-c"), Q("\"$0\" list /no/helper 0 1 4 7 | tr ',' '\\n'"), probe_});
  EXPECT_EQ(outcome.output.count(Q("DELTA|NT Server")), 2) << "for the filters 1 and 7";
  EXPECT_EQ(outcome.output.size(), 1 + static_cast<qsizetype>(std::size(kStreet)));
  EXPECT_TRUE(outcome.output.contains(Q("10.88.0.15|NT Workstation"))) << "it announces itself by answering";
}

TEST_F(ScanNetwork, AnnouncementsGiveTypeAndVersionWhereThePortIsFree) {
  EXPECT_EQ(Scan().notes.filter(Q("138")).size(), 1);
  const ByteVector announcement = AnnouncementDatagram(1, "OLD,TIMER", 4, 10, 0x402003);
  const QString file =
      WriteFile(street_->NewFolder() + Q("/packet"),
                {reinterpret_cast<const char*>(announcement.data()), static_cast<qsizetype>(announcement.size())});
  street_->Start(*old_, Q("bash"), {Q("-c"), Q("while :; do cat $0 >/dev/udp/10.88.0.1/138; sleep 0.1; done"), file});
  street_->Near().Set("ip_unprivileged_port_start", "0");
  const Seen seen = Scan();
  EXPECT_EQ(seen.notes, QStringList());
  EXPECT_EQ(seen.hosts.value(Q("OLD_TIMER")).mid(0, 3).join(QLatin1Char(' ')).toStdString(),
            "Windows 98 10.88.0.19 listed");
}

TEST_F(ScanNetwork, ALargerNetIsSweptInWindows) {
  street_->Near().Batch("addr del 10.88.0.1/24 dev cable\naddr add 10.88.0.1/22 brd + dev cable\n");
  const Seen seen = Scan();
  street_->Near().Batch("addr del 10.88.0.1/22 dev cable\naddr add 10.88.0.1/24 brd + dev cable\n");
  EXPECT_TRUE(seen.complete);
  ExpectStreet(seen.hosts, true);
  EXPECT_LT(seen.milliseconds, 30000);
  std::printf("a /22 with ten machines: %d ms\n", seen.milliseconds);
}

}  // namespace
}  // namespace quarl::netscan
