#include <gtest/gtest.h>

#include <limits>

#include "base/Error.h"
#include "base/NodeKey.h"

namespace quarl {
namespace {

struct KeyCase {
  QString key;
  NodeKind kind;
  std::optional<qint32> id;  // what IdOf() gives; nothing = throws
  bool canonical;
};

class NodeKeyTable : public ::testing::TestWithParam<KeyCase> {};

TEST_P(NodeKeyTable, KindIdAndCanonicalForm) {
  const KeyCase& c = GetParam();
  EXPECT_EQ(NodeKey::KindOf(c.key), c.kind);
  if (c.id) {
    EXPECT_EQ(NodeKey::IdOf(c.key), *c.id);
  } else {
    EXPECT_THROW(NodeKey::IdOf(c.key), Error);
  }
  const auto parts = NodeKey::Split(c.key);
  EXPECT_EQ(parts.has_value(), c.canonical);
  if (parts) {
    EXPECT_EQ(NodeKey::Make(parts->kind, parts->id), c.key);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Keys, NodeKeyTable,
    ::testing::Values(
        KeyCase{QStringLiteral("_GROUP_0"), NodeKind::Group, 0, true},
        KeyCase{QStringLiteral("_SERVER_12"), NodeKind::Server, 12, true},
        KeyCase{QStringLiteral("_STESTS_12"), NodeKind::TestsFolder, 12, true},
        KeyCase{QStringLiteral("_TEST_2147483647"), NodeKind::Test, std::numeric_limits<qint32>::max(), true},
        KeyCase{QStringLiteral("_TEST_2147483648"), NodeKind::Test, std::nullopt, false},
        KeyCase{QStringLiteral("_ALERTS_3"), NodeKind::AlertsFolder, 3, true},
        KeyCase{QStringLiteral("_ALERT_3"), NodeKind::Alert, 3, true},
        KeyCase{QStringLiteral("_ALERT_-3"), NodeKind::Alert, -3, true},
        KeyCase{QStringLiteral("_ALERT_03"), NodeKind::Alert, 3, false},
        KeyCase{QStringLiteral("_ALERT_ 3"), NodeKind::Alert, 3, false},
        KeyCase{QStringLiteral("_ALERT_-0"), NodeKind::Alert, 0, false},
        KeyCase{QStringLiteral("_ALERT_-2147483648"), NodeKind::Alert, std::numeric_limits<qint32>::min(), true},
        KeyCase{QStringLiteral("_ALERT_-2147483649"), NodeKind::Alert, std::nullopt, false},
        KeyCase{QStringLiteral("_ALERT_-"), NodeKind::Alert, std::nullopt, false},
        KeyCase{QStringLiteral("_ALERT_+3"), NodeKind::Alert, 3, false},
        KeyCase{QStringLiteral("_ALERT_10000000003"), NodeKind::Alert, std::nullopt, false},
        KeyCase{QStringLiteral("_SERVER_"), NodeKind::Server, std::nullopt, false},
        KeyCase{QStringLiteral("_SERVER_1x"), NodeKind::Server, std::nullopt, false},
        KeyCase{QStringLiteral("_server_1"), NodeKind::Other, std::nullopt, false},
        KeyCase{QStringLiteral("x_SERVER_1"), NodeKind::Other, std::nullopt, false},
        KeyCase{QStringLiteral("_LOG"), NodeKind::Log, std::nullopt, true},
        KeyCase{QStringLiteral("_LOGS"), NodeKind::Log, std::nullopt, false},
        KeyCase{QString(), NodeKind::Other, std::nullopt, false}));

}  // namespace
}  // namespace quarl
