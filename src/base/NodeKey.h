#pragma once

#include <QString>
#include <optional>

namespace quarl {

/// What a node key stands for; Other is any text that begins with none of the prefixes, the empty key included.
enum class NodeKind : quint8 { Other, Log, Group, Server, TestsFolder, Test, AlertsFolder, Alert };

/// The keys of tree nodes and list rows: a kind prefix followed by the record's id in decimal.
/// Prefixes are case-sensitive and none is the beginning of another, so a kind is told by the key's beginning.
namespace NodeKey {

inline constexpr QStringView kGroup = u"_GROUP_";
inline constexpr QStringView kServer = u"_SERVER_";
inline constexpr QStringView kTestsFolder = u"_STESTS_";
inline constexpr QStringView kTest = u"_TEST_";
inline constexpr QStringView kAlertsFolder = u"_ALERTS_";
inline constexpr QStringView kAlert = u"_ALERT_";
inline constexpr QStringView kLog = u"_LOG";
inline constexpr QStringView kRoot = u"_GROUP_0";

/// The prefix of a kind; empty for Other.
QStringView Prefix(NodeKind kind);
/// The key of a record; the id is ignored for Log and Other.
QString Make(NodeKind kind, qint32 id);
NodeKind KindOf(QStringView key);
/// The id behind the key's prefix. Throws Error when the rest is not a whole 32-bit number.
qint32 IdOf(QStringView key);

/// A key in the one form that Make() gives it.
struct Parts {
  NodeKind kind = NodeKind::Other;
  qint32 id = 0;
  bool operator==(const Parts&) const = default;
};
/// Nothing for a key that Make() never gives: leading zeros, signs, blanks, numbers past 32 bits, unknown prefixes.
std::optional<Parts> Split(QStringView key);

}  // namespace NodeKey
}  // namespace quarl
