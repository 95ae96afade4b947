#pragma once

#include <QString>
#include <optional>

#include "netscan/api/Bytes.h"

// The first two questions of an SMB2 conversation, which every server answers to anybody. No one logs on.

namespace quarl::netscan {

/// Whole messages with the length in front, as they go over TCP.
ByteVector SmbNegotiate();
ByteVector SmbSessionSetup();

/// The first whole message in the bytes that have come in, without its length.
struct SmbMessage {
  bool hostile = false;          ///< no such message can come any more
  std::optional<Bytes> content;  ///< nothing: more has to come in
};
SmbMessage FirstSmbMessage(Bytes received);

/// Whether this is a successful answer to the negotiation.
bool IsSmbNegotiated(Bytes message);

/// What the server tells about itself in its challenge. Names as sent; empty or 0 where it tells nothing.
struct SmbChallenge {
  QString computer;     ///< at most 15 characters
  QString domain;       ///< workgroup or domain, when it is not the computer itself
  QString dnsComputer;  ///< the whole name
  std::uint8_t major = 0;
  std::uint8_t minor = 0;
  std::uint16_t build = 0;
  bool hasVersion = false;
};
/// Nothing when the answer to the session set-up holds no whole challenge.
std::optional<SmbChallenge> ReadSmbChallenge(Bytes message);

}  // namespace quarl::netscan
