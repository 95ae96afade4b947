#include "netscan/api/SmbPacket.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace quarl::netscan {
namespace {

constexpr std::array<std::uint8_t, 4> kMark{0xfe, 'S', 'M', 'B'};
constexpr std::size_t kHeader = 64, kLongestMessage = std::size_t{64} * 1024;
constexpr std::uint16_t kNegotiateCommand = 0, kSessionSetupCommand = 1;
constexpr std::uint32_t kMoreProcessing = 0xc0000016;
constexpr std::array<std::uint16_t, 4> kDialects{0x0202, 0x0210, 0x0300, 0x0302};
constexpr std::array<std::uint8_t, 8> kNtlm{'N', 'T', 'L', 'M', 'S', 'S', 'P', 0};
constexpr std::uint32_t kNtlmVersion = 0x02000000;
// Unicode, target, NTLM, always sign, extended session security, version, 128 bits
constexpr std::uint32_t kNtlmFlags = 0x1 | 0x4 | 0x200 | 0x8000 | 0x80000 | kNtlmVersion | 0x20000000;

ByteWriter Header(std::uint16_t command, std::uint8_t messageId) {
  ByteWriter writer;
  writer.Add(kMark).Little16(kHeader).Zeros(6).Little16(command).Little16(1).Zeros(8);
  return writer.Byte(messageId).Zeros(39);
}

ByteVector WithLength(ByteWriter& message) {
  return ByteWriter().Big32(static_cast<std::uint32_t>(message.Size())).Add(message.Done()).Done();
}

ByteVector NtlmNegotiate() {
  ByteWriter writer;
  writer.Add(kNtlm).Little32(1).Little32(kNtlmFlags).Zeros(16);
  return writer.Byte(6).Byte(1).Little16(0).Zeros(3).Byte(15).Done();
}

// A DER element; the contents here stay below 128 bytes.
ByteVector Element(std::uint8_t tag, const ByteVector& content) {
  return ByteWriter().Byte(tag).Byte(static_cast<std::uint8_t>(content.size())).Add(content).Done();
}

// The first token of the negotiation of a security mechanism: NTLM only, and its first message.
ByteVector SecurityToken() {
  const ByteVector spnego{0x06, 0x06, 0x2b, 0x06, 0x01, 0x05, 0x05, 0x02};
  const ByteVector ntlm{0x06, 0x0a, 0x2b, 0x06, 0x01, 0x04, 0x01, 0x82, 0x37, 0x02, 0x02, 0x0a};
  const ByteVector mechanisms = Element(0xa0, Element(0x30, ntlm));
  const ByteVector token = Element(0xa2, Element(0x04, NtlmNegotiate()));
  const ByteVector init = Element(0xa0, Element(0x30, ByteWriter().Add(mechanisms).Add(token).Done()));
  return Element(0x60, ByteWriter().Add(spnego).Add(init).Done());
}

// Whether this answers the command; if so the reader stands behind the header.
bool IsAnswer(ByteReader& reader, std::uint16_t command, std::uint32_t status) {
  const Bytes mark = reader.Take(kMark.size());
  if (!std::equal(mark.begin(), mark.end(), kMark.begin(), kMark.end())) return false;
  if (reader.Little16() != kHeader) return false;
  reader.Skip(2);
  if (reader.Little32() != status || reader.Little16() != command) return false;
  reader.Skip(kHeader - 14);
  return reader.Ok();
}

// The part of the bytes that a length and an offset at the reader name.
Bytes Named(Bytes bytes, ByteReader& reader) {
  const std::uint16_t length = reader.Little16();
  reader.Skip(2);
  const std::uint32_t offset = reader.Little32();
  return reader.Ok() ? ByteReader(bytes, offset).Take(length) : Bytes();
}

QString Utf16Text(Bytes bytes) {
  QString text;
  ByteReader reader(bytes);
  while (reader.Left() >= 2) text += QChar(reader.Little16());
  return text;
}

void TakeTargets(SmbChallenge& challenge, Bytes pairs) {
  ByteReader reader(pairs);
  while (reader.Left() >= 4) {
    const std::uint16_t kind = reader.Little16();
    const Bytes value = reader.Take(reader.Little16());
    if (kind == 1) challenge.computer = Utf16Text(value);
    if (kind == 2) challenge.domain = Utf16Text(value);
    if (kind == 3) challenge.dnsComputer = Utf16Text(value);
  }
  if (challenge.domain.compare(challenge.computer, Qt::CaseInsensitive) == 0) challenge.domain.clear();
}

}  // namespace

ByteVector SmbNegotiate() {
  ByteWriter writer = Header(kNegotiateCommand, 0);
  writer.Little16(36).Little16(kDialects.size()).Little16(1).Zeros(2 + 4 + 16 + 8);
  for (const std::uint16_t dialect : kDialects) writer.Little16(dialect);
  return WithLength(writer);
}

ByteVector SmbSessionSetup() {
  const ByteVector token = SecurityToken();
  ByteWriter writer = Header(kSessionSetupCommand, 1);
  writer.Little16(25)
      .Byte(0)
      .Byte(1)
      .Zeros(8)
      .Little16(kHeader + 24)
      .Little16(static_cast<std::uint32_t>(token.size()));
  writer.Zeros(8).Add(token);
  return WithLength(writer);
}

SmbMessage FirstSmbMessage(Bytes received) {
  ByteReader reader(received);
  const std::uint32_t length = reader.Big32();
  if (!reader.Ok()) return {};
  if (length < kHeader || length > kLongestMessage) return {true, {}};
  const Bytes content = reader.Take(length);
  return reader.Ok() ? SmbMessage{false, content} : SmbMessage{};
}

bool IsSmbNegotiated(Bytes message) {
  ByteReader reader(message);
  return IsAnswer(reader, kNegotiateCommand, 0);
}

std::optional<SmbChallenge> ReadSmbChallenge(Bytes message) {
  ByteReader reader(message);
  if (!IsAnswer(reader, kSessionSetupCommand, kMoreProcessing)) return std::nullopt;
  const auto start = std::search(message.begin() + kHeader, message.end(), kNtlm.begin(), kNtlm.end());
  const Bytes ntlm = message.subspan(static_cast<std::size_t>(start - message.begin()));
  ByteReader fields(ntlm);
  fields.Skip(kNtlm.size());
  if (fields.Little32() != 2) return std::nullopt;
  fields.Skip(8);
  const std::uint32_t flags = fields.Little32();
  fields.Skip(16);
  SmbChallenge challenge;
  TakeTargets(challenge, Named(ntlm, fields));
  if (!fields.Ok()) return std::nullopt;
  const std::uint8_t major = fields.Byte(), minor = fields.Byte();
  const std::uint16_t build = fields.Little16();
  if ((flags & kNtlmVersion) != 0 && fields.Ok()) {
    challenge.major = major;
    challenge.minor = minor;
    challenge.build = build;
    challenge.hasVersion = true;
  }
  return challenge;
}

}  // namespace quarl::netscan
