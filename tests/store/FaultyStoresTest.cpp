#include "store/StoreFixture.h"
#include "support/FaultyStores.h"

namespace quarl::store {
namespace {

const QString kGetGroups = QStringLiteral("GroupStore.GetGroups");

class FaultyStoresTest : public ::testing::Test {
 protected:
  FaultyStoresTest() {
    const qint32 type = folder_.AddTestType(stores_, QStringLiteral("Ping"));
    EXPECT_EQ(stores_.Groups().AddGroup(QStringLiteral("g"), {}), 1);
    EXPECT_EQ(stores_.Servers().AddServer(QStringLiteral("s"), {}, 1), 2);
    EXPECT_EQ(stores_.Tests().AddTest(2, type, {}), 1);
  }
  StoreFolder folder_;
  SqlStores stores_{folder_.Setup(StoreLocation::InMemory())};
  FaultyStores faulty_{stores_};
};

TEST_F(FaultyStoresTest, FaultsBeginAtTheGivenCallAndEndWithHeal) {
  faulty_.ThrowFrom(kGetGroups, 2, QStringLiteral("broken"));
  EXPECT_EQ(Column(faulty_.Groups().GetGroups(0), "GroupName"), QStringLiteral("g"));
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(ErrorOf([&] { std::ignore = faulty_.Groups().GetGroups(0); }), QStringLiteral("broken"));
  }
  EXPECT_TRUE(faulty_.Servers().GetServer(2));
  faulty_.Heal();
  EXPECT_FALSE(faulty_.Groups().GetGroups(0).Eof());
  EXPECT_EQ(faulty_.Calls(kGetGroups), 4);
  EXPECT_EQ(faulty_.Calls(), 5);
  faulty_.ThrowAlways();
  EXPECT_THROW(std::ignore = faulty_.Servers().GetServer(2), StoreError);
}

TEST_F(FaultyStoresTest, ARefusalChangesNothing) {
  faulty_.RefuseFrom(kGetGroups);
  faulty_.RefuseFrom(QStringLiteral("GroupStore.AddGroup"));
  faulty_.RefuseFrom(QStringLiteral("ServerStore.RemoveServer"));
  EXPECT_TRUE(faulty_.Groups().GetGroups(0).Eof());
  EXPECT_EQ(faulty_.Groups().AddGroup(QStringLiteral("h"), {}), 0);
  EXPECT_FALSE(faulty_.Servers().RemoveServer(2));
  EXPECT_EQ(Column(stores_.Groups().GetGroups(0), "GroupName"), QStringLiteral("g"));
  EXPECT_TRUE(stores_.Servers().GetServer(2));
}

TEST_F(FaultyStoresTest, ATreeEndsBeforeTheFaultyPart) {
  faulty_.ThrowFrom(QStringLiteral("TreeReader.Tests"), 2);
  EXPECT_FALSE(faulty_.Tree().ReadTree().failure);
  const TreeRows tree = faulty_.Tree().ReadTree();
  ASSERT_TRUE(tree.failure);
  EXPECT_EQ(tree.failure->part, TreeRows::Part::Tests);
  EXPECT_EQ(tree.servers.size(), 1U);
  EXPECT_TRUE(tree.tests.empty());
  EXPECT_EQ(faulty_.Calls(QStringLiteral("TreeReader.ServerAlerts")), 1);
}

}  // namespace
}  // namespace quarl::store
