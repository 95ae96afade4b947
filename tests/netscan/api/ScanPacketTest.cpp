#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <QStringList>
#include <random>

#include "netscan/api/DnsPacket.h"
#include "netscan/api/HostName.h"
#include "netscan/api/NetBiosPacket.h"
#include "netscan/api/ServerList.h"
#include "netscan/api/SmbPacket.h"
#include "netscan/api/TestPackets.h"
#include "netscan/api/WsDiscoveryMessage.h"

namespace quarl::netscan {
namespace {

const QByteArray kMatches =
    "<?xml version=\"1.0\"?><s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\" "
    "xmlns:a=\"http://schemas.xmlsoap.org/ws/2004/08/addressing\" "
    "xmlns:d=\"http://schemas.xmlsoap.org/ws/2005/04/discovery\"><s:Header><a:MessageID>urn:uuid:1</a:MessageID>"
    "</s:Header><s:Body><d:ProbeMatches><d:ProbeMatch><a:EndpointReference><a:Address>urn:uuid:2</a:Address>"
    "</a:EndpointReference><d:XAddrs>http://10.88.0.13:5357/2/ http://[fe80::1]:5357/2/</d:XAddrs></d:ProbeMatch>"
    "</d:ProbeMatches></s:Body></s:Envelope>";
const QByteArray kDescription =
    "<e><p:FriendlyName xmlns:p=\"p\">Box</p:FriendlyName><pub:Computer xmlns:pub=\"q\">WHISKY/Workgroup:LAB"
    "</pub:Computer></e>";
const QByteArray kHttp = "HTTP/1.1 200 OK\r\nContent-Length: ";

struct NodeCase {
  const char* name;
  std::vector<NetBiosEntry> names;
  const char* computer;  // null: no answer at all
  const char* workgroup;
  quint32 type;
};

TEST(ScanPacket, NodeStatusGivesNameGroupAndRole) {
  const NodeCase cases[] = {
      {"plain", {{"ALPHA", 0, false}, {"LAB", 0, true}, {"LAB", 0x1e, true}}, "ALPHA", "LAB", 0},
      {"files", {{"LAB", 0, true}, {"ALPHA", 0x20, false}, {"ALPHA", 0, false}}, "ALPHA", "LAB", kServesFiles},
      {"primary",
       {{"D", 0, false}, {"LAB", 0x1b, false}, {"LAB", 0x1c, true}},
       "D",
       "",
       kDomainController | kBackupController},
      {"backup", {{"D", 0, false}, {"LAB", 0x1c, true}}, "D", "", kBackupController},
      {"group instead of name", {{"LAB", 0, true}}, nullptr, "", 0},
      {"no names", {}, nullptr, "", 0},
      {"blank", {{"", 0, false}}, nullptr, "", 0},
  };
  for (const NodeCase& c : cases) {
    const auto status = ReadNodeStatus(NodeStatusReply(77, c.names), 77);
    ASSERT_EQ(status.has_value(), c.computer != nullptr) << c.name;
    EXPECT_FALSE(ReadNodeStatus(NodeStatusReply(77, c.names), 78)) << c.name;
    if (!status) continue;
    EXPECT_EQ(status->name, QLatin1String(c.computer)) << c.name;
    EXPECT_EQ(status->workgroup, QLatin1String(c.workgroup)) << c.name;
    EXPECT_EQ(status->type, c.type) << c.name;
  }
}

TEST(ScanPacket, AnnouncementsAreThoseOfMachines) {
  for (const std::uint8_t operation :
       {std::uint8_t{0x01}, std::uint8_t{0x0f}, std::uint8_t{0x0c}, std::uint8_t{0x02}}) {
    const auto read = ReadAnnouncement(AnnouncementDatagram(operation, "OLDTIMER", 4, 10, 0x402003));
    ASSERT_EQ(read.has_value(), operation == 0x01 || operation == 0x0f) << int{operation};
    if (!read) continue;
    EXPECT_EQ(read->name, Q("OLDTIMER"));
    EXPECT_EQ(std::make_tuple(read->major, read->minor, read->type), std::make_tuple(4, 10, 0x402003U));
  }
  EXPECT_FALSE(ReadAnnouncement(AnnouncementRequest(1, 0x0a580001, "QUARL", "LAB"))) << "a question";
}

TEST(ScanPacket, SmbChallengeGivesVersionAndNames) {
  const auto member = ReadSmbChallenge(SmbChallengeReply("ALPHA", "LAB", "alpha.lab.example", 10, 0, 19041));
  ASSERT_TRUE(member);
  EXPECT_EQ((QStringList{member->computer, member->domain, member->dnsComputer}),
            (QStringList{Q("ALPHA"), Q("LAB"), Q("alpha.lab.example")}));
  EXPECT_EQ(std::make_tuple(member->hasVersion, member->major, member->minor, member->build),
            std::make_tuple(true, 10, 0, 19041));
  const auto alone = ReadSmbChallenge(SmbChallengeReply("ALPHA", "ALPHA", nullptr, 6, 1, 0));
  ASSERT_TRUE(alone);
  EXPECT_TRUE(alone->domain.isEmpty());
}

TEST(ScanPacket, SmbLengthsAreNotBelieved) {
  const std::pair<QByteArray, bool> cases[] = {{QByteArray(3, '\0'), false},
                                               {QByteArray("\0\0\0\x05hello", 9), true},
                                               {QByteArray("\x7f\xff\xff\xff", 4), true},
                                               {QByteArray("HTTP/1.1 400 Bad", 16), true},
                                               {QByteArray("\0\0\0\x50", 4) + QByteArray(40, 'x'), false}};
  for (const auto& [bytes, hostile] : cases) {
    const SmbMessage message = FirstSmbMessage(BytesOf(bytes));
    EXPECT_EQ(message.hostile, hostile) << bytes.toHex().constData();
    EXPECT_FALSE(message.content);
  }
  ByteVector challenge = SmbChallengeReply("ALPHA", "LAB", nullptr, 10, 0, 1);
  challenge[72 + 40] = 0xff;  // the pairs are longer than the message
  challenge[72 + 41] = 0xff;
  const auto read = ReadSmbChallenge(challenge);
  EXPECT_TRUE(!read || read->computer.isEmpty());
}

TEST(ScanPacket, DnsRecordsAreReadThroughCompressedNames) {
  const auto records = ReadDnsResponse(DnsReply());
  ASSERT_EQ(records.size(), 3U);
  EXPECT_EQ(records[0].target, Q("Lab box._smb._tcp.local"));
  EXPECT_EQ(records[1].owner, records[0].target);
  EXPECT_EQ(records[1].target, Q("alpha.local"));
  EXPECT_EQ(records[2].owner, Q("alpha.local"));
  EXPECT_EQ(AddressText(records[2].address), Q("10.88.0.10"));
}

TEST(ScanPacket, DnsNamesThatLoopOrNeverEndGiveNothing) {
  ByteWriter head;
  head.Big16(0).Big16(0x8400).Big16(0).Big16(1).Zeros(4);
  const ByteVector start = head.Done();
  ByteVector longName;
  for (int label = 0; label < 8; ++label) {
    longName.push_back(63);
    longName.insert(longName.end(), 63, 'a');
  }
  longName.push_back(0);
  const ByteVector names[] = {{0xc0, 12},            // to itself
                              {0xc0, 14, 0xc0, 12},  // to each other
                              {0xc0, 200},           // beyond the end
                              {0xff, 0xff},         {0x40, 'a', 0}, {5, 'a'}, longName};
  for (const ByteVector& name : names) {
    const ByteVector packet =
        ByteWriter().Add(start).Add(name).Big16(12).Big16(1).Big32(1).Big16(2).Big16(0xc00c).Done();
    EXPECT_TRUE(ReadDnsResponse(packet).empty()) << int{name[0]};
  }
}

TEST(ScanPacket, DnsNamesFollowOnlySoManyPointers) {
  for (const std::uint32_t pointers : {100U, 200U}) {
    ByteWriter packet;
    packet.Big16(0).Big16(0x8400).Big16(0).Big16(2).Zeros(4);
    packet.Byte(0).Big16(16).Big16(1).Big32(1).Big16(2 * pointers + 1).Byte(0);  // each leads to the one before it
    std::uint32_t last = static_cast<std::uint32_t>(packet.Size()) - 1;
    for (std::uint32_t count = 0; count < pointers; ++count) {
      const auto here = static_cast<std::uint32_t>(packet.Size());
      packet.Big16(0xc000 | last);
      last = here;
    }
    packet.Big16(0xc000 | last).Big16(1).Big16(1).Big32(1).Big16(4).Big32(0x0a58000a);
    EXPECT_EQ(ReadDnsResponse(packet.Done()).size(), pointers == 100 ? 1U : 0U);
  }
}

TEST(ScanPacket, DnsQuestionsTakeOnlyLabelsThatFit) {
  EXPECT_TRUE(DnsQuery(1, {{Q("_smb._tcp.local")}}));
  for (const QString& name : {QString(), Q("a..local"), QString(64, QLatin1Char('a'))})
    EXPECT_FALSE(DnsQuery(1, {{name}})) << name.toStdString();
  const QString dotted = Q("Dr") + QChar(0x2024) + Q(" Who.local");
  EXPECT_EQ(DnsQuery(1, {{dotted}})->at(12), 7) << "a dot inside a label ends no label";
}

TEST(ScanPacket, WsLocationsLeadOnlyToTheMachineItself) {
  const auto matches = ReadWsMatches(kMatches);
  ASSERT_EQ(matches.size(), 1U);
  EXPECT_EQ(matches[0].endpoint, Q("urn:uuid:2"));
  ASSERT_EQ(matches[0].locations.size(), 2U);
  const in_addr_t own = inet_addr("10.88.0.13");
  const auto location = ReadWsLocation(matches[0].locations[0], own);
  ASSERT_TRUE(location);
  EXPECT_EQ(location->port, 5357);
  EXPECT_EQ(location->path, "/2/");
  for (const char* text :
       {"http://[fe80::1]:5357/2/", "http://10.88.0.14:5357/2/", "https://10.88.0.13/", "http://10.88.0.13:0/",
        "http://10.88.0.13:99999/", "file:///etc/passwd", "", "http://whisky/"})
    EXPECT_FALSE(ReadWsLocation(QLatin1String(text), own)) << text;
  const QByteArray request = WsGet({80, "/a"}, own, Q("<&>"), Q("1"));
  EXPECT_TRUE(request.contains("&lt;&amp;&gt;</wsa:To>"));
}

TEST(ScanPacket, WsDescriptionsAreReadOnceTheyAreWhole) {
  const QByteArray size = QByteArray::number(kDescription.size());
  const QByteArray chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" +
                             QByteArray::number(kDescription.size(), 16) + "\r\n" + kDescription + "\r\n0\r\n\r\n";
  const std::pair<QByteArray, bool> cases[] = {
      {kHttp + size + "\r\n\r\n" + kDescription, true},
      {kHttp + size + "\r\n\r\n" + kDescription.chopped(1), false},
      {kHttp + "-1\r\n\r\n" + kDescription, false},
      {kHttp + "99999999999999999999\r\n\r\n" + kDescription, false},
      {"HTTP/1.1 200 OK\r\n\r\n" + kDescription, true},
      {"HTTP/1.1 404 Not\r\n\r\n" + kDescription, false},
      {chunked, true},
      {chunked.chopped(8), false},
      {"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n7fffffffffffffff\r\nx", false},
      {"HTTP/1.1 200 OK\r\n\r\n<e/>", false},
      {"nonsense", false},
  };
  for (const auto& [answer, whole] : cases) {
    const auto description = ReadWsDescription(answer);
    ASSERT_EQ(description.has_value(), whole) << answer.left(80).constData();
    if (!description) continue;
    EXPECT_EQ(description->computer, Q("WHISKY"));
    EXPECT_EQ(description->workgroup, Q("LAB"));
  }
}

void ReadAsEverything(const ByteVector& bytes) {
  const Bytes packet(bytes);
  const QByteArray text(reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size()));
  (void)ReadNodeStatus(packet, 77);
  (void)ReadAnnouncement(packet);
  (void)FirstSmbMessage(packet);
  (void)IsSmbNegotiated(packet);
  (void)ReadSmbChallenge(packet);
  (void)ReadDnsResponse(packet);
  (void)ReadWsMatches(text);
  (void)ReadWsDescription(text);
}

// Worth its time under the sanitizers: every reader sees cut and damaged copies of every packet.
TEST(ScanPacket, DamagedCopiesNeverLeadOutOfThePacket) {
  const QByteArray answer = kHttp + QByteArray::number(kDescription.size()) + "\r\n\r\n" + kDescription;
  const Bytes http = BytesOf(answer), xml = BytesOf(kMatches);
  const ByteVector seeds[] = {NodeStatusReply(77, {{"ALPHA", 0, false}, {"LAB", 0, true}}),
                              AnnouncementDatagram(1, "ALPHA", 5, 1, 0x9003),
                              SmbChallengeReply("ALPHA", "LAB", "alpha.lab", 10, 0, 19041),
                              DnsReply(),
                              {http.begin(), http.end()},
                              {xml.begin(), xml.end()}};
  std::mt19937 random(20240607);  // always the same
  for (const ByteVector& seed : seeds) {
    for (std::size_t size = 0; size < seed.size(); ++size)
      ReadAsEverything(ByteVector(seed.begin(), seed.begin() + static_cast<std::ptrdiff_t>(size)));
    for (int round = 0; round < 1500; ++round) {
      ByteVector damaged = seed;
      for (std::size_t count = 1 + random() % 6; count > 0; --count)
        damaged[random() % damaged.size()] = static_cast<std::uint8_t>(random() % 3 == 0 ? 0xff : random());
      ReadAsEverything(damaged);
    }
  }
}

}  // namespace
}  // namespace quarl::netscan
