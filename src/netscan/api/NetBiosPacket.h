#pragma once

#include <QString>
#include <optional>

#include "netscan/api/Bytes.h"

// The bytes of NetBIOS name service and of the announcements that machines make in its datagrams.

namespace quarl::netscan {

/// A NetBIOS name as it stands in packets: 34 bytes. The name is cut at 15 characters, padded with `pad`.
ByteVector EncodeNetBiosName(const QByteArray& name, std::uint8_t suffix, char pad = ' ');

/// The question which names a machine has registered.
ByteVector NodeStatusRequest(std::uint16_t id, bool broadcast);

/// What a machine tells about itself. The names are as sent.
struct NodeStatus {
  QString name;
  QString workgroup;
  std::uint32_t type = 0;  ///< server-type word: domain controllers and file service
};
/// Nothing for anything but a whole answer to the request of this id.
std::optional<NodeStatus> ReadNodeStatus(Bytes packet, std::uint16_t id);

/// Asks the machines of a workgroup to announce themselves now.
ByteVector AnnouncementRequest(std::uint16_t id, std::uint32_t ownAddress, const QByteArray& ownName,
                               const QByteArray& workgroup);

struct Announcement {
  QString name;
  std::uint8_t major = 0;
  std::uint8_t minor = 0;
  std::uint32_t type = 0;  ///< server-type word
};
/// The announcement of a machine or of a local master browser in a whole datagram; nothing for anything else.
std::optional<Announcement> ReadAnnouncement(Bytes datagram);

}  // namespace quarl::netscan
