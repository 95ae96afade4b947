#include <gtest/gtest.h>

#include <limits>

#include "base/Error.h"
#include "base/NodeKey.h"

namespace quarl {
namespace {

TEST(NodeKeyTest, KindIdAndCanonicalForm) {
  const struct {
    const char* text;
    NodeKind kind;
    std::optional<qint32> id;  // what IdOf() gives; nothing = throws
    bool canonical;
  } cases[] = {{"_GROUP_0", NodeKind::Group, 0, true},
               {"_SERVER_12", NodeKind::Server, 12, true},
               {"_STESTS_12", NodeKind::TestsFolder, 12, true},
               {"_TEST_2147483647", NodeKind::Test, std::numeric_limits<qint32>::max(), true},
               {"_TEST_2147483648", NodeKind::Test, std::nullopt, false},
               {"_ALERTS_3", NodeKind::AlertsFolder, 3, true},
               {"_ALERT_3", NodeKind::Alert, 3, true},
               {"_ALERT_-3", NodeKind::Alert, -3, true},
               {"_ALERT_03", NodeKind::Alert, 3, false},
               {"_ALERT_ 3", NodeKind::Alert, 3, false},
               {"_ALERT_-0", NodeKind::Alert, 0, false},
               {"_ALERT_-2147483648", NodeKind::Alert, std::numeric_limits<qint32>::min(), true},
               {"_ALERT_-2147483649", NodeKind::Alert, std::nullopt, false},
               {"_ALERT_-", NodeKind::Alert, std::nullopt, false},
               {"_ALERT_+3", NodeKind::Alert, 3, false},
               {"_ALERT_10000000003", NodeKind::Alert, std::nullopt, false},
               {"_SERVER_", NodeKind::Server, std::nullopt, false},
               {"_SERVER_1x", NodeKind::Server, std::nullopt, false},
               {"_server_1", NodeKind::Other, std::nullopt, false},
               {"x_SERVER_1", NodeKind::Other, std::nullopt, false},
               {"_LOG", NodeKind::Log, std::nullopt, true},
               {"_LOGS", NodeKind::Log, std::nullopt, false},
               {"", NodeKind::Other, std::nullopt, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const QString key = QString::fromLatin1(c.text);
    EXPECT_EQ(NodeKey::KindOf(key), c.kind);
    if (c.id) {
      EXPECT_EQ(NodeKey::IdOf(key), *c.id);
    } else {
      EXPECT_THROW(NodeKey::IdOf(key), Error);
    }
    const auto parts = NodeKey::Split(key);
    EXPECT_EQ(parts.has_value(), c.canonical);
    if (parts) {
      EXPECT_EQ(NodeKey::Make(parts->kind, parts->id), key);
    }
  }
}

}  // namespace
}  // namespace quarl
