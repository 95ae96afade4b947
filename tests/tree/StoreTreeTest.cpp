#include <gtest/gtest.h>

#include "support/FaultyStores.h"
#include "tree/Common.h"
#include "tree/StoreSupport.h"
#include "tree/TreeBuilder.h"
#include "tree/TreeSupport.h"

namespace quarl::tree {
namespace {

// The tree of a real store, and what is shown of errors.
class StoreTree : public ::testing::Test {
 protected:
  void Load() {
    TreeBuilder(faulty_, model_, [this](const QString& text) { messages_ << text; }).LoadTree();
  }
  void AddTest(qint32 server, qint32 type) { common_.AddTestToServer(server, type); }

  MemoryStore memory_;
  store::FaultyStores faulty_{memory_()};
  ObjectTreeModel model_{TestIcon};
  ObjectTree view_{model_};
  QStringList messages_;
  Common common_{faulty_,
                 view_,
                 {.failure = [this](Text id) { messages_ << QString::number(static_cast<int>(id)); },
                  .error = [this](const QString& text) { messages_ << text; }}};
};

TEST_F(StoreTree, LoadsInTheStoresOrder) {
  Load();
  EXPECT_EQ(Outline(model_), Q("_GROUP_0 SERVERS iSERVERGROUP +\n"
                               "  _GROUP_2 Aachen iSERVERGROUP\n"
                               "    _ALERTS_2 ALERTS iALERT +\n"
                               "      _ALERT_2 page iALERT1\n"
                               "  _GROUP_1 Berlin iSERVERGROUP\n"
                               "    _SERVER_11 alpha iSERVER\n"
                               "      _STESTS_11 TESTS iTEST +\n"
                               "        _TEST_1 first iTEST1\n"
                               "        _TEST_2 second iTEST2\n"
                               "      _ALERTS_11 ALERTS iALERT +\n"
                               "        _ALERT_1 mail me iALERT1\n"
                               "  _SERVER_13 Alpha iSERVER\n"
                               "  _SERVER_12 beta iSERVER\n"
                               "_LOG LOGS iLOGS\n"));
  EXPECT_EQ(messages_, QStringList());
}

TEST_F(StoreTree, LoadTakesFiveStatementsAndPreparesThemOnce) {
  Load();
  const store::SqlStatistics before = memory_().Statistics();
  Load();
  const store::SqlStatistics after = memory_().Statistics();
  EXPECT_EQ(after.statementsExecuted - before.statementsExecuted, 5U);
  EXPECT_EQ(after.statementsPrepared, before.statementsPrepared);
  EXPECT_EQ(after.transactions - before.transactions, 1U);
}

TEST_F(StoreTree, AnUnreadablePartLeavesWhatWasReadAndOneMessage) {
  const struct {
    const char* operation;
    std::size_t nodes;  // of 14
    bool hasLog;
    const char* message;
  } cases[] = {{"TreeReader.Groups", 1, false, "Gone."},
               {"TreeReader.Servers", 4, true, "Gone.(Main:AddGroupTree)"},
               {"TreeReader.Tests", 7, true, "Gone.(Main:AddGroupTree)"},
               {"TreeReader.ServerAlerts", 10, true, "Gone.(Main:AddGroupTree)"},
               {"TreeReader.GroupAlerts", 12, true, "Gone.(Main:AddGroupTree)"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.operation);
    messages_.clear();
    faulty_.ThrowFrom(Q(c.operation), 1, Q("Gone."));
    Load();
    EXPECT_EQ(model_.Count(), c.nodes);
    EXPECT_EQ(model_.Contains(u"_LOG"), c.hasLog);
    EXPECT_EQ(model_.IsExpanded(u"_GROUP_0"), c.hasLog);
    EXPECT_EQ(messages_, QStringList{Q(c.message)});
    faulty_.Heal();
    Load();
    EXPECT_EQ(model_.Count(), 14U);
  }
}

TEST_F(StoreTree, FirstTestOfAServerMakesItsFolder) {
  Load();
  AddTest(12, 2);
  AddTest(12, 1);
  EXPECT_EQ(model_.ChildrenOf(u"_SERVER_12"), QStringList{Q("_STESTS_12")});
  const QStringList tests = model_.ChildrenOf(u"_STESTS_12");
  ASSERT_EQ(tests.size(), 2);
  EXPECT_EQ(model_.TextOf(tests[0]), Q("TCP port"));
  EXPECT_EQ(model_.ImageKeyOf(tests[0]), Q("iTEST2"));
  EXPECT_EQ(model_.TextOf(tests[1]), Q("Ping"));
  EXPECT_TRUE(view_.isExpanded(model_.IndexOf(u"_STESTS_12")));
  EXPECT_TRUE(view_.isExpanded(model_.IndexOf(u"_SERVER_12")));
  AddTest(11, 1);
  EXPECT_EQ(model_.ChildCountOf(u"_STESTS_11"), 3);
  EXPECT_EQ(messages_, QStringList());
  const QString before = Outline(model_).remove(u'+').remove(u' ');
  Load();
  EXPECT_EQ(Outline(model_).remove(u'+').remove(u' '), before);
}

TEST_F(StoreTree, RefusedTestShowsTheFailure) {
  Load();
  AddTest(99, 1);
  AddTest(12, 7);
  EXPECT_EQ(messages_, (Words("104 104")));
  EXPECT_EQ(model_.Count(), 14U);
}

TEST_F(StoreTree, ErrorWhileAddingATestIsShownAndLeavesWhatWasDone) {
  Load();
  faulty_.ThrowFrom(Q("TestStore.GetTestsByServer"), 1, Q("Gone."));
  AddTest(12, 1);
  EXPECT_EQ(messages_, QStringList{Q("Gone.")});
  EXPECT_EQ(model_.Count(), 14U);
  faulty_.Heal();
  faulty_.RefuseFrom(Q("TestStore.GetTestsByServer"));  // no row of the new test
  AddTest(12, 1);
  faulty_.Heal();
  EXPECT_EQ(messages_.size(), 1);
  EXPECT_EQ(model_.Count(), 14U);
  AddTest(12, 9);
  EXPECT_EQ(messages_.size(), 2);
  EXPECT_TRUE(model_.Contains(u"_STESTS_12"));
  EXPECT_EQ(model_.ChildCountOf(u"_STESTS_12"), 0);
  EXPECT_EQ(memory_().Tests().GetTestsByServer(12).RowCount(), 3U);
}

}  // namespace
}  // namespace quarl::tree
