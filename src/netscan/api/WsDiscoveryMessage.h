#pragma once

#include <netinet/in.h>

#include <QByteArray>
#include <QString>
#include <optional>
#include <vector>

// The messages by which devices of the web services family are found and asked for their names.

namespace quarl::netscan {

/// @param messageId a fresh UUID in text form.
QByteArray WsProbe(const QString& messageId);

/// Asks a device that left them out for its locations.
QByteArray WsResolve(const QString& endpoint, const QString& messageId);

struct WsMatch {
  QString endpoint;                ///< "urn:uuid:..."
  std::vector<QString> locations;  ///< "http://10.0.0.5:5357/..."; may be empty in the answer to a probe
};
/// The devices in the answer to a probe or to the question for locations; empty for anything that is no such answer.
std::vector<WsMatch> ReadWsMatches(const QByteArray& message);

/// The port and path of a location that is plain HTTP at this very address.
struct WsLocation {
  in_port_t port = 80;  ///< host byte order
  QByteArray path;
};
std::optional<WsLocation> ReadWsLocation(const QString& location, in_addr_t address);

/// The whole HTTP request for a device's description.
QByteArray WsGet(const WsLocation& location, in_addr_t address, const QString& endpoint, const QString& messageId);

struct WsDescription {
  QString computer;   ///< empty for a device that is no computer
  QString workgroup;  ///< or domain
  QString friendlyName;
};
/// Nothing for anything but a successful HTTP answer that describes a device and has come in whole.
std::optional<WsDescription> ReadWsDescription(const QByteArray& answer);

}  // namespace quarl::netscan
