#include "base/NodeKey.h"

#include <array>

#include "base/Error.h"

namespace quarl::NodeKey {
namespace {

struct Row {
  NodeKind kind;
  QStringView prefix;
};

constexpr std::array<Row, 7> kRows{{{NodeKind::Log, kLog},
                                    {NodeKind::Group, kGroup},
                                    {NodeKind::Server, kServer},
                                    {NodeKind::TestsFolder, kTestsFolder},
                                    {NodeKind::Test, kTest},
                                    {NodeKind::AlertsFolder, kAlertsFolder},
                                    {NodeKind::Alert, kAlert}}};

}  // namespace

QStringView Prefix(NodeKind kind) {
  for (const Row& row : kRows) {
    if (row.kind == kind) return row.prefix;
  }
  return {};
}

QString Make(NodeKind kind, qint32 id) {
  const QString prefix = Prefix(kind).toString();
  return kind == NodeKind::Log || kind == NodeKind::Other ? prefix : prefix + QString::number(id);
}

NodeKind KindOf(QStringView key) {
  for (const Row& row : kRows) {
    if (key.startsWith(row.prefix)) return row.kind;
  }
  return NodeKind::Other;
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
  bool ok = false;
  const qint32 id = kind == NodeKind::Log ? 0 : key.mid(Prefix(kind).size()).toInt(&ok);
  if (kind != NodeKind::Log && !ok) return std::nullopt;
  if (Make(kind, id) != key) return std::nullopt;
  return Parts{kind, id};
}

}  // namespace quarl::NodeKey
