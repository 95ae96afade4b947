#include <gtest/gtest.h>

#include "netscan/api/EchoSocket.h"
#include "netscan/api/NetLab.h"

namespace quarl::netscan {
namespace {

using User = NetLab::User;

// A laboratory each: a router sends only a few errors in a row to one asker.
class EchoNetwork : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!lab_.Missing().isEmpty()) GTEST_SKIP() << lab_.Missing().toStdString();
    probe_ = lab_.Install(Q(ECHO_PROBE), Q("echo_probe"), false);
    plain_ = lab_.Install(Q(QUARL_LAYOUT_DIR "/quarl-echo"), Q("plain"), false);
  }

  NetLab::Outcome Probe(User user, const QString& helper, const char* mode, const QStringList& addresses) {
    return lab_.Run(user, probe_, QStringList{QString::fromLatin1(mode), helper} + addresses);
  }

  NetLab lab_;
  QString probe_, plain_;
};

constexpr const char* kClosed = "1 0";
constexpr const char* kOpen = "0 2147483647";

// Addresses of every fate that comes by itself, and the status that it must have on every way.
const std::pair<const char*, const char*> kFates[] = {
    {"10.77.0.2", "0"},     {"127.0.0.1", "0"},     {"0.0.0.0", "0"},         {"10.77.2.1", "11003"},
    {"10.77.3.1", "11002"}, {"10.77.4.1", "11003"}, {"10.77.5.1", "11013"},   {"192.0.2.1", "11002"},
    {"224.0.0.1", "11018"}, {"10.77.0.2", "0"},     {"10.77.0.255", "11018"},
};

struct WayCase {
  const char* name;
  User user;
  const char* groupRange;
  bool capability;
  const char* way;
};

class EchoWays : public EchoNetwork, public ::testing::WithParamInterface<WayCase> {};

TEST_P(EchoWays, GiveTheSameStatuses) {
  const WayCase& c = GetParam();
  const QString helper = lab_.Install(Q(QUARL_LAYOUT_DIR "/quarl-echo"), Q("h"), c.capability);
  if (helper.isEmpty()) GTEST_SKIP() << lab_.Missing().toStdString();
  lab_.Set(NetLab::Side::Near, "ping_group_range", c.groupRange);
  QStringList addresses{Q("20000")}, statuses;  // a time-out that a loaded machine does not reach
  for (const auto& [address, status] : kFates) {
    addresses << QString::fromLatin1(address);
    statuses << QString::fromLatin1(status);
  }
  const auto sweep = Probe(c.user, helper, "sweep", addresses);
  ASSERT_EQ(sweep.exitCode, 0) << sweep.errors.toStdString();
  ASSERT_EQ(sweep.output.value(0).toStdString(), c.way);
  const bool none = qstrcmp(c.way, "none") == 0;
  if (!none) {
    EXPECT_EQ(sweep.output.mid(1, statuses.size()).join(QLatin1Char(' ')).toStdString(),
              statuses.join(QLatin1Char(' ')).toStdString());
  }
  const auto ping = Probe(c.user, helper, "ping", {Q("10.77.1.1")});
  EXPECT_EQ(ping.output.join(QLatin1Char(' ')).toStdString(), none ? "0" : "11010");
}

const WayCase kWays[] = {
    {"RootClosed", User::Root, kClosed, false, "raw"},
    {"RootOpen", User::Root, kOpen, false, "datagram"},
    {"UserOpen", User::Nobody, kOpen, false, "datagram"},
    {"UserClosedHelper", User::Nobody, kClosed, true, "helper"},
    {"UserClosedHelperPlain", User::Nobody, kClosed, false, "none"},
    {"UserClosedNoNewPrivileges", User::NobodyConfined, kClosed, true, "none"},
};
INSTANTIATE_TEST_SUITE_P(Users, EchoWays, ::testing::ValuesIn(kWays),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(EchoNetwork, WithoutAnyWayEveryAddressAnswersAndOneLineSaysSo) {
  lab_.Set(NetLab::Side::Near, "ping_group_range", kClosed);
  for (const QString& helper : {plain_, plain_ + Q("-missing")}) {
    const auto outcome = Probe(User::Nobody, helper, "ping", Words("10.77.0.2 10.77.1.1 no.address"));
    EXPECT_EQ(outcome.output, (Words("0 0 -1")));
    EXPECT_EQ(outcome.errors.count(QLatin1Char('\n')), 1) << outcome.errors.toStdString();
    EXPECT_TRUE(outcome.errors.contains(helper));
  }
}

TEST_F(EchoNetwork, AHostThatIgnoresEchoesTimesOut) {
  lab_.Set(NetLab::Side::Far, "icmp_echo_ignore_all", "1");
  const auto outcome = Probe(User::Root, plain_, "ping", {Q("10.77.0.2")});
  lab_.Set(NetLab::Side::Far, "icmp_echo_ignore_all", "0");
  EXPECT_EQ(outcome.output, QStringList(Q("11010")));
}

TEST_F(EchoNetwork, RepliesToOthersLeaveRoomForOurs) {
  const auto others = EchoSocket::Open(EchoMethod::Raw);
  const auto ours = EchoSocket::Open(EchoMethod::Raw);
  ASSERT_TRUE(others && ours);
  const in_addr_t self = htonl(INADDR_LOOPBACK);
  for (std::uint16_t sequence = 0; sequence < 5000; ++sequence) ASSERT_TRUE(others->Send(sequence, self));
  ASSERT_TRUE(ours->Send(7, self));
  ours->Wait(std::chrono::seconds(5));
  const auto answer = ours->Receive();
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->sequence, 7);
}

TEST_F(EchoNetwork, TwoHundredSilentHostsCostAboutOneTimeOut) {
  for (const char* net : {"10.77.0.", "10.77.1."}) {  // absent neighbours, silence behind a router
    QStringList addresses{Q("500")};
    for (int host = 10; host < 210; ++host) addresses << QString::fromLatin1(net) + QString::number(host);
    const auto outcome = Probe(User::Root, plain_, "sweep", addresses);
    ASSERT_EQ(outcome.output.size(), 202);
    EXPECT_EQ(outcome.output.count(Q("11010")), 200) << net;
    const int milliseconds = outcome.output.last().toInt();
    EXPECT_GE(milliseconds, 500) << net;
    EXPECT_LT(milliseconds, 10000) << net << " one after the other they would cost 100 s";
    RecordProperty(net[6] == '0' ? "absent_ms" : "silent_ms", milliseconds);
  }
}

}  // namespace
}  // namespace quarl::netscan
