#include "netscan/api/HostName.h"

#include <arpa/inet.h>

#include <QList>

namespace quarl::netscan {
namespace {

constexpr qsizetype kLongest = 253;  // of a host name in DNS
const QChar kReplacement = QLatin1Char('_');

bool MayStand(char32_t character) {
  if (character == U',' || character == U'|') return false;
  switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Format:  // among them those that turn the direction of the text round
    case QChar::Other_Surrogate:
    case QChar::Other_NotAssigned:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
      return false;
    default:
      return true;
  }
}

}  // namespace

QString CleanName(const QString& raw) {
  static const QString cut = QStringLiteral("...");
  QString clean;
  for (const char32_t character : raw.left(4 * kLongest).trimmed().toUcs4()) {
    if (MayStand(character))
      clean += QChar::fromUcs4(character);
    else
      clean += kReplacement;
  }
  if (clean.size() <= kLongest) return clean;
  clean.truncate(kLongest - cut.size());
  if (clean.back().isHighSurrogate()) clean.chop(1);
  return clean + cut;
}

QString WithoutLocalDomain(const QString& name) {
  QString host = name;
  if (host.endsWith(QLatin1Char('.'))) host.chop(1);
  if (!host.endsWith(QLatin1String(".local"), Qt::CaseInsensitive)) return name;
  host.chop(6);
  return host;
}

QString AddressText(in_addr_t address) {
  if (address == 0) return {};
  const quint32 host = ntohl(address);
  return QStringLiteral("%1.%2.%3.%4").arg(host >> 24).arg(host >> 16 & 0xff).arg(host >> 8 & 0xff).arg(host & 0xff);
}

}  // namespace quarl::netscan
