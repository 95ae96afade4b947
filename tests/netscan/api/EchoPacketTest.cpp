#include <arpa/inet.h>
#include <gtest/gtest.h>

#include "netscan/api/Echo.h"
#include "netscan/api/EchoLine.h"
#include "netscan/api/EchoPace.h"
#include "netscan/api/TestPackets.h"

namespace quarl::netscan {
namespace {

using namespace std::chrono_literals;

constexpr std::uint16_t kId = 0x1234;
constexpr const char* kRequest = "08005c9212340007544553545f44415441";
constexpr const char* kReply = "0000649212340007544553545f44415441";
constexpr const char* kHeader = "450000250000000040010000";  // 20 bytes with the two addresses below
constexpr const char* kAddresses = "0a4d00020a4d0001";

TEST(EchoPacket, RequestIsTheKnownMessage) {
  const auto made = MakeEchoRequest(kId, 7);
  EXPECT_EQ(QByteArray(reinterpret_cast<const char*>(made.data()), made.size()).toHex(), QByteArray(kRequest));
}

struct ReplyCase {
  const char* name;
  QByteArray icmp;  // in hexadecimal
  std::optional<std::uint16_t> id;
  bool accepted;
};

TEST(EchoPacket, OnlyWholeOwnRepliesAreRead) {
  const ReplyCase cases[] = {
      {"reply", kReply, kId, true},
      {"reply, the kernel matched the id", kReply, std::nullopt, true},
      {"another id", kReply, 0x1235, false},
      {"our own request", kRequest, kId, false},
      {"empty", "", kId, false},
      {"header cut", QByteArray(kReply).left(14), kId, false},
      {"header alone", QByteArray(kReply).left(16), kId, false},
      {"data cut", QByteArray(kReply).left(32), kId, false},
      {"data too long", QByteArray(kReply) + "00", kId, false},
      {"checksum off by one", "0000649312340007544553545f44415441", kId, false},
      {"other data, right checksum", "0000649212340007544553545f41415444", kId, false},
      {"a code that replies never have", "0001649112340007544553545f44415441", kId, false},
  };
  for (const ReplyCase& c : cases) {
    const QByteArray bytes = QByteArray::fromHex(c.icmp);
    const auto sequence = ReadEchoReply(BytesOf(bytes), c.id);
    EXPECT_EQ(sequence.has_value(), c.accepted) << c.name;
    if (sequence) {
      EXPECT_EQ(*sequence, 7) << c.name;
    }
  }
}

TEST(EchoPacket, HeaderOfTheIpPacketIsSkipped) {
  const QByteArray plain = QByteArray(kHeader) + kAddresses;
  const QByteArray options = QByteArray("460000290000000040010000") + kAddresses + "01010100";
  const std::pair<QByteArray, bool> cases[] = {
      {plain + kReply, true},
      {options + kReply, true},
      {plain + kReply + "0000", true},                            // padding behind the packet
      {QByteArray(plain).replace(0, 2, "65") + kReply, false},    // version 6
      {QByteArray(plain).replace(0, 2, "44") + kReply, false},    // header shorter than a header
      {QByteArray(plain).replace(0, 2, "4f") + kReply, false},    // header longer than the packet
      {QByteArray(plain).replace(4, 4, "0013") + kReply, false},  // total shorter than the header
      {QByteArray(plain).replace(18, 2, "11") + kReply, false},   // UDP
      {(plain + kReply).left(2 * 36), false},                     // cut
      {plain.left(38), false},                                    // header cut
      {QByteArray(), false},
  };
  for (const auto& [hex, accepted] : cases) {
    const QByteArray bytes = QByteArray::fromHex(hex);
    const auto icmp = IcmpOfPacket(BytesOf(bytes));
    EXPECT_EQ(icmp && ReadEchoReply(*icmp, kId) == 7, accepted) << hex.constData();
  }
}

TEST(EchoPacket, QuotedRequestNeedsNoData) {
  const auto read = [](const QByteArray& hex, std::optional<std::uint16_t> id) {
    const QByteArray bytes = QByteArray::fromHex(hex);
    return ReadQuotedRequest(BytesOf(bytes), id);
  };
  EXPECT_EQ(read(QByteArray(kRequest).left(16), kId), 7);
  EXPECT_EQ(read(QByteArray(kRequest).left(14), kId), std::nullopt);
  EXPECT_EQ(read(kRequest, 0x4321), std::nullopt);
  EXPECT_EQ(read(kReply, kId), std::nullopt);
}

TEST(EchoStatus, MessagesThatEndNoEcho) {
  EXPECT_EQ(StatusOfIcmp(5, 1), EchoStatus::Answered) << "redirect";
  EXPECT_EQ(StatusOfIcmp(4, 0), EchoStatus::Answered) << "source quench";
  for (int code = 0; code < 256; ++code)
    EXPECT_NE(StatusOfIcmp(3, static_cast<std::uint8_t>(code)), EchoStatus::Answered) << code;
}

TEST(EchoAddress, FollowsInetAddr) {
  const std::pair<QString, std::optional<std::uint32_t>> cases[] = {
      {Q("1.2.3.4"), 0x01020304},
      {Q("0.0.0.0"), 0},
      {Q("1.2.3"), 0x01020003},
      {Q("10"), 10},
      {Q("0x7f.1"), 0x7f000001},
      {Q("010.0.0.1"), 0x08000001},
      {Q("1.2.3.4 "), 0x01020304},
      {Q(" 1.2.3.4"), std::nullopt},
      {Q("256.1.1.1"), std::nullopt},
      {Q("1.2.3.256"), std::nullopt},
      {Q("1.2.3.4.5"), std::nullopt},
      {Q("1..2.3"), std::nullopt},
      {Q("-1.2.3.4"), std::nullopt},
      {QString(), std::nullopt},
      {Q("server1"), std::nullopt},
      {Q("255.255.255.255"), std::nullopt},
      {Q("::1"), std::nullopt},
      {Q("1.2.3.\u0664"), std::nullopt},
      {Q("1.2.3.4") + QChar(), std::nullopt},
  };
  for (const auto& [text, expected] : cases) {
    const auto address = EchoAddress(text);
    ASSERT_EQ(address.has_value(), expected.has_value()) << text.toStdString();
    if (address) {
      EXPECT_EQ(ntohl(*address), *expected) << text.toStdString();
    }
  }
}

TEST(EchoLines, GoodLinesSurviveAndOthersAreRefused) {
  const auto request = ReadRequestLine("65535 10.0.0.255");
  ASSERT_TRUE(request);
  EXPECT_EQ(request->sequence, 65535);
  EXPECT_EQ(request->address, inet_addr("10.0.0.255"));
  const auto answer = ReadAnswerLine("65535 255.255.255.254 11050");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, EchoStatus::GeneralFailure);
  for (const char* bad :
       {"", " ", "7", "7 10.0.0.1", "7 10.0.0.1 x", "7 10.0.0.1 99999999999", "7 10.0.0.1 0 ", "ready"})
    EXPECT_FALSE(ReadAnswerLine(bad)) << bad;
}

TEST(EchoLines, ComeInAnyPieces) {
  EchoLines lines;
  EXPECT_TRUE(lines.Add("1 10.0"));
  EXPECT_FALSE(lines.HasNext());
  EXPECT_TRUE(lines.Add(".0.1\n2 10.0.0.2\n3"));
  EXPECT_EQ(lines.Next(), "1 10.0.0.1");
  EXPECT_EQ(lines.Next(), "2 10.0.0.2");
  EXPECT_EQ(lines.Next(), std::nullopt);
  EXPECT_TRUE(lines.Add(std::string(kLongestEchoLine - 1, ' ')));
  EXPECT_FALSE(lines.Add(" "));
}

TEST(EchoPace, OneWindowAtOnceThenOneEveryTwoMilliseconds) {
  auto now = EchoPace::Clock::time_point(1h);
  EchoPace pace(now);
  const auto takeAll = [&] {
    int count = 0;
    for (; pace.Until(now) == 0ms; ++count) pace.Take(now);
    return count;
  };
  EXPECT_EQ(takeAll(), 254);
  EXPECT_EQ(pace.Until(now), 2ms);
  now += 100ms;
  EXPECT_EQ(takeAll(), 50);
  now += 1h;
  EXPECT_EQ(takeAll(), 254) << "rest saves up no more than one window";
}

}  // namespace
}  // namespace quarl::netscan
