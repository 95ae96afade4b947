#include "netscan/api/WsDiscoveryMessage.h"

#include <QUrl>
#include <QXmlStreamReader>

#include "netscan/api/HostName.h"

namespace quarl::netscan {
namespace {

constexpr const char* kEverybody = "urn:schemas-xmlsoap-org:ws:2005:04:discovery";

// Some responders search the bytes for these very prefixes.
QByteArray Envelope(const char* to, const char* action, const QString& messageId, const QByteArray& more,
                    const QByteArray& body) {
  return QByteArrayLiteral(
             "<?xml version=\"1.0\" encoding=\"utf-8\"?>"
             "<soap:Envelope xmlns:soap=\"http://www.w3.org/2003/05/soap-envelope\" "
             "xmlns:wsa=\"http://schemas.xmlsoap.org/ws/2004/08/addressing\" "
             "xmlns:wsd=\"http://schemas.xmlsoap.org/ws/2005/04/discovery\" "
             "xmlns:wsdp=\"http://schemas.xmlsoap.org/ws/2006/02/devprof\"><soap:Header><wsa:To>") +
         to + "</wsa:To><wsa:Action>" + action + "</wsa:Action><wsa:MessageID>urn:uuid:" + messageId.toUtf8() +
         "</wsa:MessageID>" + more + "</soap:Header><soap:Body>" + body + "</soap:Body></soap:Envelope>";
}

// The body of a whole HTTP answer; nothing while bytes are missing, and for any status but 200.
std::optional<QByteArray> HttpBody(const QByteArray& answer) {
  const qsizetype end = answer.indexOf("\r\n\r\n");
  if (end < 0 || !answer.startsWith("HTTP/1.") || answer.mid(8, 5) != " 200 ") return std::nullopt;
  const QByteArray head = answer.left(end + 2).toLower();
  const QByteArray rest = answer.mid(end + 4);
  if (const qsizetype at = head.indexOf("\r\ncontent-length:"); at >= 0) {
    bool isNumber = false;
    const qsizetype from = at + 17;
    const qsizetype size = head.mid(from, head.indexOf("\r\n", from) - from).trimmed().toLongLong(&isNumber);
    if (!isNumber || size < 0 || rest.size() < size) return std::nullopt;
    return rest.left(size);
  }
  if (!head.contains("\r\ntransfer-encoding: chunked")) return rest;
  QByteArray body;
  for (qsizetype at = 0;;) {
    const qsizetype line = rest.indexOf("\r\n", at);
    if (line < 0) return std::nullopt;
    bool isNumber = false;
    const QByteArray number = rest.mid(at, line - at);
    const qsizetype size = number.split(';').first().trimmed().toLongLong(&isNumber, 16);
    if (!isNumber || size < 0 || size > rest.size() - line - 2) return std::nullopt;
    if (size == 0) return body;
    body += rest.mid(line + 2, size);
    at = line + 2 + size + 2;
  }
}

}  // namespace

QByteArray WsProbe(const QString& messageId) {
  return Envelope(kEverybody, "http://schemas.xmlsoap.org/ws/2005/04/discovery/Probe", messageId, {},
                  "<wsd:Probe><wsd:Types>wsdp:Device</wsd:Types></wsd:Probe>");
}

QByteArray WsResolve(const QString& endpoint, const QString& messageId) {
  return Envelope(kEverybody, "http://schemas.xmlsoap.org/ws/2005/04/discovery/Resolve", messageId, {},
                  "<wsd:Resolve><wsa:EndpointReference><wsa:Address>" + endpoint.toHtmlEscaped().toUtf8() +
                      "</wsa:Address></wsa:EndpointReference></wsd:Resolve>");
}

std::vector<WsMatch> ReadWsMatches(const QByteArray& message) {
  std::vector<WsMatch> matches;
  QXmlStreamReader xml(message);
  while (!xml.atEnd()) {
    if (xml.readNext() != QXmlStreamReader::StartElement) continue;
    if (xml.name() == QLatin1String("ProbeMatch") || xml.name() == QLatin1String("ResolveMatch")) {
      matches.emplace_back();
    } else if (matches.empty()) {
      continue;
    } else if (xml.name() == QLatin1String("Address") && matches.back().endpoint.isEmpty()) {
      matches.back().endpoint = xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
    } else if (xml.name() == QLatin1String("XAddrs")) {
      const QString text = xml.readElementText(QXmlStreamReader::SkipChildElements).simplified();
      for (const QString& location : text.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        matches.back().locations.push_back(location);
    }
  }
  if (xml.hasError()) return {};
  return matches;
}

std::optional<WsLocation> ReadWsLocation(const QString& location, in_addr_t address) {
  const QUrl url(location, QUrl::StrictMode);
  if (!url.isValid() || url.scheme() != QLatin1String("http") || url.host() != AddressText(address))
    return std::nullopt;
  const int port = url.port(80);
  if (port < 1) return std::nullopt;
  QByteArray path = url.path(QUrl::FullyEncoded).toLatin1();
  if (!path.startsWith('/')) path.prepend('/');
  return WsLocation{static_cast<in_port_t>(port), path};
}

QByteArray WsGet(const WsLocation& location, in_addr_t address, const QString& endpoint, const QString& messageId) {
  const QByteArray body = Envelope(
      endpoint.toHtmlEscaped().toUtf8().constData(), "http://schemas.xmlsoap.org/ws/2004/09/transfer/Get", messageId,
      "<wsa:ReplyTo><wsa:Address>http://schemas.xmlsoap.org/ws/2004/08/addressing/role/anonymous</wsa:Address>"
      "</wsa:ReplyTo>",
      {});
  return "POST " + location.path + " HTTP/1.1\r\nHost: " + AddressText(address).toLatin1() + ":" +
         QByteArray::number(location.port) +
         "\r\nContent-Type: application/soap+xml\r\nConnection: close\r\nContent-Length: " +
         QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

std::optional<WsDescription> ReadWsDescription(const QByteArray& answer) {
  const auto body = HttpBody(answer);
  if (!body) return std::nullopt;
  WsDescription description;
  QXmlStreamReader xml(*body);
  while (!xml.atEnd()) {
    if (xml.readNext() != QXmlStreamReader::StartElement) continue;
    if (xml.name() == QLatin1String("FriendlyName") && description.friendlyName.isEmpty())
      description.friendlyName = xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
    else if (xml.name() == QLatin1String("Computer") && description.computer.isEmpty()) {
      // "NAME/Workgroup:GROUP", "NAME/Domain:DOMAIN" or "NAME\NotJoined"
      const QString text = xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
      const QString group = text.section(QLatin1Char('/'), 1).section(QLatin1Char(':'), 1);
      description.computer = text.section(QLatin1Char('/'), 0, 0).section(QLatin1Char('\\'), 0, 0);
      description.workgroup = group;
    }
  }
  if (xml.hasError() || (description.computer.isEmpty() && description.friendlyName.isEmpty())) return std::nullopt;
  return description;
}

}  // namespace quarl::netscan
