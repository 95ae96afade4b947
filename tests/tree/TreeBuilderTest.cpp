#include <gtest/gtest.h>

#include <QAbstractItemModelTester>

#include "tree/TreeBuilder.h"
#include "tree/TreeSupport.h"

namespace quarl::tree {
namespace {

using store::StoreError;
using store::TreeRow;
using store::TreeRows;

// A record to be shown: owner, id, type, text.
struct Record {
  qint32 owner = 0;
  qint32 id = 0;
  qint32 type = 0;
  const char* text = "";
};

struct Input {
  std::vector<Record> groups = {}, servers = {}, tests = {}, serverAlerts = {}, groupAlerts = {};
};

std::vector<TreeRow> ToRows(const std::vector<Record>& records, std::string& texts) {
  std::vector<TreeRow> rows;
  for (const Record& r : records) {
    const std::string_view text(r.text);
    rows.push_back({r.owner, r.id, r.type, static_cast<quint32>(text.size()), texts.size()});
    texts += text;
  }
  return rows;
}

// Gives rows that no store of ours would hold.
class GivenRows : public store::TreeReader, public store::Stores {
 public:
  explicit GivenRows(const Input& input) : input_(input) {}
  TreeRows ReadTree() override {
    TreeRows rows;
    rows.groups = ToRows(input_.groups, rows.texts);
    rows.servers = ToRows(input_.servers, rows.texts);
    rows.tests = ToRows(input_.tests, rows.texts);
    rows.serverAlerts = ToRows(input_.serverAlerts, rows.texts);
    rows.groupAlerts = ToRows(input_.groupAlerts, rows.texts);
    return rows;
  }

  TreeReader& Tree() override { return *this; }
  store::SystemConfig& System() override { Refuse(); }
  store::ServerStore& Servers() override { Refuse(); }
  store::GroupStore& Groups() override { Refuse(); }
  store::TestStore& Tests() override { Refuse(); }
  store::AlertStore& Alerts() override { Refuse(); }
  store::LogStore& Log() override { Refuse(); }
  store::InstallConfig& Install() override { Refuse(); }
  std::unique_ptr<store::Change> BeginChange() override { Refuse(); }

 private:
  [[noreturn]] static void Refuse() { throw StoreError(Q("only the bulk read is here")); }
  Input input_;
};

struct BuildCase {
  const char* name;
  Input input;
  const char* outline;
  const char* message = nullptr;
};

// Group and server 3 both have alerts.
const Input kClash{.groups = {{0, 3, 0, "g3"}, {0, 4, 0, "g4"}},
                   .servers = {{0, 9, 0, "root server"}, {3, 3, 0, "s3"}, {3, 5, 0, "s5"}, {4, 6, 0, "s6"}},
                   .tests = {{6, 1, 1, "ping"}},
                   .serverAlerts = {{3, 1, 1, "mail"}},
                   .groupAlerts = {{3, 2, 2, "hook"}, {4, 3, 2, "hook"}}};

const Input kWhole{.groups = {{0, 2, 0, "A"}, {0, 1, 0, "B"}},
                   .servers = {{0, 8, 0, "r"}, {1, 7, 0, "x"}, {2, 6, 0, "y"}, {2, 5, 0, "z"}},
                   .tests = {{5, 1, 2, "t1"}, {5, 2, 1, "t2"}, {8, 3, 1, "t3"}},
                   .serverAlerts = {{5, 4, 1, "a4"}},
                   .groupAlerts = {{0, 5, 1, "a5"}, {2, 1, 1, "a1"}, {2, 6, 2, "a6"}}};

const BuildCase kTrees[] = {{"empty", {}, "_GROUP_0 SERVERS iSERVERGROUP +\n_LOG LOGS iLOGS\n"},
                            {"whole", kWhole,
                             "_GROUP_0 SERVERS iSERVERGROUP +\n"
                             "  _GROUP_2 A iSERVERGROUP\n"
                             "    _SERVER_6 y iSERVER\n"
                             "    _SERVER_5 z iSERVER\n"
                             "      _STESTS_5 TESTS iTEST +\n"
                             "        _TEST_1 t1 iTEST2\n"
                             "        _TEST_2 t2 iTEST1\n"
                             "      _ALERTS_5 ALERTS iALERT +\n"
                             "        _ALERT_4 a4 iALERT1\n"
                             "    _ALERTS_2 ALERTS iALERT +\n"
                             "      _ALERT_1 a1 iALERT1\n"
                             "      _ALERT_6 a6 iALERT2\n"
                             "  _GROUP_1 B iSERVERGROUP\n"
                             "    _SERVER_7 x iSERVER\n"
                             "  _SERVER_8 r iSERVER\n"
                             "    _STESTS_8 TESTS iTEST +\n"
                             "      _TEST_3 t3 iTEST1\n"
                             "  _ALERTS_0 ALERTS iALERT +\n"
                             "    _ALERT_5 a5 iALERT1\n"
                             "_LOG LOGS iLOGS\n"},
                            {"clash of group and server", kClash,
                             "_GROUP_0 SERVERS iSERVERGROUP +\n"
                             "  _GROUP_3 g3 iSERVERGROUP\n"
                             "    _SERVER_3 s3 iSERVER\n"
                             "      _ALERTS_3 ALERTS iALERT +\n"
                             "        _ALERT_1 mail iALERT1\n"
                             "    _SERVER_5 s5 iSERVER\n"
                             "  _GROUP_4 g4 iSERVERGROUP\n"
                             "    _SERVER_6 s6 iSERVER\n"
                             "      _STESTS_6 TESTS iTEST +\n"
                             "        _TEST_1 ping iTEST1\n"
                             "    _ALERTS_4 ALERTS iALERT +\n"
                             "      _ALERT_3 hook iALERT2\n"
                             "  _SERVER_9 root server iSERVER\n"
                             "_LOG LOGS iLOGS\n",
                             "There is already a node with the key \"_ALERTS_3\".(Main:AddGroupTree)"},
                            {"image of a type is missing",
                             {.groups = {{0, 1, 0, "g"}},
                              .servers = {{0, 4, 0, "last"}, {1, 2, 0, "a"}, {1, 3, 0, "b"}},
                              .tests = {{2, 1, 1, "ok"}, {2, 2, 9, "no picture"}, {2, 3, 1, "never"}},
                              .serverAlerts = {{2, 1, 1, "never"}}},
                             "_GROUP_0 SERVERS iSERVERGROUP +\n"
                             "  _GROUP_1 g iSERVERGROUP\n"
                             "    _SERVER_2 a iSERVER\n"
                             "      _STESTS_2 TESTS iTEST +\n"
                             "        _TEST_1 ok iTEST1\n"
                             "  _SERVER_4 last iSERVER\n"
                             "_LOG LOGS iLOGS\n",
                             "no image iTEST9(Main:AddGroupTree)"},
                            {"two groups of one id",
                             {.groups = {{0, 1, 0, "g"}, {0, 1, 0, "again"}, {0, 2, 0, "never"}},
                              .servers = {{0, 4, 0, "never"}, {1, 3, 0, "s"}},
                              .tests = {{3, 1, 1, "t"}}},
                             "_GROUP_0 SERVERS iSERVERGROUP\n"
                             "  _GROUP_1 g iSERVERGROUP\n"
                             "    _SERVER_3 s iSERVER\n"
                             "      _STESTS_3 TESTS iTEST\n"
                             "        _TEST_1 t iTEST1\n",
                             "There is already a node with the key \"_GROUP_1\"."},
                            {"ids at the edges",
                             {.groups = {{0, 2147483647, 0, ""}},
                              .servers = {{2147483647, 2147483646, 0, "\xF0\x9F\x96\xA5 \"quoted\" "}},
                              .tests = {{2147483646, 2147483647, 1, "t"}}},
                             "_GROUP_0 SERVERS iSERVERGROUP +\n"
                             "  _GROUP_2147483647  iSERVERGROUP\n"
                             "    _SERVER_2147483646 \xF0\x9F\x96\xA5 \"quoted\"  iSERVER\n"
                             "      _STESTS_2147483646 TESTS iTEST +\n"
                             "        _TEST_2147483647 t iTEST1\n"
                             "_LOG LOGS iLOGS\n"}};

TEST(TreeBuilder, BuildsTheTreeAndTellsWhatIsWrong) {
  for (const BuildCase& c : kTrees) {
    SCOPED_TRACE(c.name);
    GivenRows stores(c.input);
    ObjectTreeModel model(TestIcon);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QStringList messages;
    QString seen;
    int resets = 0;
    QObject::connect(&model, &QAbstractItemModel::modelReset, &model, [&] { ++resets; });
    TreeBuilder builder(stores, model, [&](const QString& text) {
      messages << text;
      seen = Outline(model);
    });
    builder.LoadTree();
    EXPECT_EQ(Outline(model), Q(c.outline));
    EXPECT_EQ(messages, c.message ? QStringList(Q(c.message)) : QStringList());
    EXPECT_TRUE(messages.isEmpty() || seen == Outline(model)) << "a message came before the tree was there";
    builder.LoadTree();
    EXPECT_EQ(Outline(model), Q(c.outline));
    EXPECT_EQ(resets, 2);
  }
}

TEST(TreeBuilder, ReportsDamagedTexts) {
  class Damaged : public GivenRows {
   public:
    Damaged() : GivenRows(kWhole) {}
    TreeRows ReadTree() override {
      TreeRows rows = GivenRows::ReadTree();
      rows.servers[2].textOffset = rows.texts.size() + 1000;
      rows.servers[2].textLength = 1;
      return rows;
    }
  } stores;
  ObjectTreeModel model(TestIcon);
  QStringList messages;
  TreeBuilder(stores, model, [&](const QString& text) { messages << text; }).LoadTree();
  EXPECT_EQ(messages, QStringList{Q("A text of the tree is damaged.(Main:AddGroupTree)")});
  EXPECT_TRUE(model.Contains(u"_SERVER_7"));
  EXPECT_TRUE(model.Contains(u"_LOG"));
}

TEST(TreeBuilder, SaysWhichImageIsMissingForTheRoot) {
  GivenRows stores(kWhole);
  ObjectTreeModel model([](const QString& key) -> QIcon { throw Error(key); });
  QStringList messages;
  TreeBuilder(stores, model, [&](const QString& text) { messages << text; }).LoadTree();
  EXPECT_EQ(messages, QStringList{Q("iSERVERGROUP")});
  EXPECT_EQ(model.Count(), 0U);
}

}  // namespace
}  // namespace quarl::tree
