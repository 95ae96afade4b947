#include "base/NodeKey.h"

#include <array>
#include <cstring>

#include "base/Error.h"

namespace quarl::NodeKey {
namespace {

// In the order of the kinds.
constexpr std::array<QStringView, 8> kPrefixes{QStringView(), kLog,  kGroup,        kServer,
                                               kTestsFolder,  kTest, kAlertsFolder, kAlert};

// A prefix known when this is compiled is compared in one or two machine words.
template <const QStringView& prefix>
bool Begins(QStringView key) {
  return key.size() >= prefix.size() &&
         std::memcmp(key.utf16(), prefix.utf16(), static_cast<std::size_t>(prefix.size()) * sizeof(char16_t)) == 0;
}

}  // namespace

QStringView Prefix(NodeKind kind) {
  return kPrefixes.at(static_cast<std::size_t>(kind));
}

QString Make(NodeKind kind, qint32 id) {
  const QString prefix = Prefix(kind).toString();
  return kind == NodeKind::Log || kind == NodeKind::Other ? prefix : prefix + QString::number(id);
}

NodeKind KindOf(QStringView key) {
  switch (key.size() < kLog.size() ? u' ' : key[1].unicode()) {
    case u'L':
      return Begins<kLog>(key) ? NodeKind::Log : NodeKind::Other;
    case u'G':
      return Begins<kGroup>(key) ? NodeKind::Group : NodeKind::Other;
    case u'S':
      if (Begins<kServer>(key)) return NodeKind::Server;
      return Begins<kTestsFolder>(key) ? NodeKind::TestsFolder : NodeKind::Other;
    case u'T':
      return Begins<kTest>(key) ? NodeKind::Test : NodeKind::Other;
    case u'A':
      if (Begins<kAlert>(key)) return NodeKind::Alert;
      return Begins<kAlertsFolder>(key) ? NodeKind::AlertsFolder : NodeKind::Other;
    default:
      return NodeKind::Other;
  }
}

qint32 IdOf(QStringView key) {
  bool ok = false;
  const qint32 id = key.mid(Prefix(KindOf(key)).size()).toInt(&ok);
  if (!ok) throw Error(QStringLiteral("\"%1\" holds no valid record number.").arg(key.left(80)));
  return id;
}

std::optional<Parts> Split(QStringView key) {
  const NodeKind kind = KindOf(key);
  if (kind == NodeKind::Other) return std::nullopt;
  QStringView digits = key.sliced(Prefix(kind).size());
  if (kind == NodeKind::Log) return digits.isEmpty() ? std::optional(Parts{kind, 0}) : std::nullopt;
  const bool negative = !digits.isEmpty() && digits.front() == u'-';
  if (negative) digits = digits.sliced(1);
  if (digits.isEmpty() || digits.size() > 10) return std::nullopt;
  if (digits[0] == u'0' && (negative || digits.size() > 1)) return std::nullopt;
  qint64 id = 0;
  for (const QChar digit : digits) {
    const unsigned value = digit.unicode() - unsigned{u'0'};
    if (value > 9) return std::nullopt;
    id = id * 10 + value;
  }
  if (negative) id = -id;
  if (id != static_cast<qint32>(id)) return std::nullopt;
  return Parts{kind, static_cast<qint32>(id)};
}

}  // namespace quarl::NodeKey
