#include <gtest/gtest.h>

#include <QAbstractItemModelTester>

#include "base/DateTimeText.h"
#include "support/FaultyStores.h"
#include "tree/ContentFills.h"
#include "tree/ContentList.h"
#include "tree/ContentViews.h"
#include "tree/StoreSupport.h"
#include "tree/TreeSupport.h"

namespace quarl::tree {
namespace {

using store::FieldType;
using store::RecordSet;

// A line a row: "key | image | first | second | third".
QStringList Lines(const ContentRows& rows, const NodeImages& images) {
  QStringList lines;
  for (std::size_t row = 0; row < rows.RowCount(); ++row) {
    const quint16 image = rows.Image(row);
    QStringList cells{rows.Key(row), image == ContentRows::kNoImage ? QString() : images.Key(image)};
    for (std::size_t column = 0; column < ContentRows::kColumns; ++column) cells << rows.Text(row, column);
    lines << cells.join(Q(" | "));
  }
  return lines;
}

constexpr const char* kNull = nullptr;

// A record as texts: numbers in decimal, Null as kNull.
using Record = std::vector<const char*>;

RecordSet Records(const store::FieldList& fields, const std::vector<Record>& records) {
  RecordSet set(std::make_shared<const store::FieldList>(fields));
  for (const Record& record : records) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (record[i] == kNull) {
        set.AppendNull();
      } else if (fields[i].type == FieldType::Text) {
        set.AppendText(record[i]);
      } else {
        set.AppendInteger(QByteArray(record[i]).toLongLong());
      }
    }
  }
  return set;
}

enum class View { Group, All, Tests, Log };

void Fill(View view, ContentRows& rows, NodeImages& images, const std::vector<Record>& records) {
  const auto text = FieldType::Text;
  const auto number = FieldType::Integer;
  const store::FieldList servers{
      {"IDServer", number}, {"ServerName", text}, {"ServerIP", text}, {"IDTestState", number}, {"GroupName", text}};
  const store::FieldList tests{{"IDTest", number},      {"TestName", text},
                               {"IDTestState", number}, {"LastExecution", FieldType::DateTime},
                               {"TestState", text},     {"LastResult", text}};
  const store::FieldList log{{"LogDescription", text}, {"IDSeverity", number}, {"LogDate", FieldType::DateTime}};
  if (view == View::Tests) return FillTests(rows, images, Records(tests, records));
  if (view == View::Log) return FillLog(rows, images, Records(log, records));
  FillServers(rows, images, Records(servers, records), view == View::All);
}

struct FillCase {
  const char* name;
  View view;
  std::vector<Record> records;
  std::vector<const char*> lines;  // %1 is the date of the epoch's first second
  bool whole = true;               // the fill reached the last record
};

QStringList Texts(const std::vector<const char*>& texts) {
  QStringList list;
  for (const char* text : texts) list << QString::fromUtf8(text);
  return list;
}

TEST(Fills, RowsAndWhereTheyEnd) {
  const Record server{"1", "a", "10.0.0.1", "1", "g"};
  const Record test{"1", "t", "3", "1000", "failed", "no answer"};
  const Record log{"text", "3", "1000"};
  const char* const serverLine = "_SERVER_1 | iTEST_STATE1 | a | 10.0.0.1 | ";
  const char* const serverOfAll = "_SERVER_1 | iTEST_STATE1 | a | 10.0.0.1 | g";
  const char* const testLine = "_TEST_1 | iTEST_STATE3 | t | %1 failed - no answer | ";
  const char* const logLine = " | iSEVERITY3 | text | %1 | ";
  const char *const noServer = "_SERVER_2 |  |  |  | ", *const noTest = "_TEST_2 |  |  |  | ";
  const FillCase cases[] = {
      {"no servers", View::All, {}, {}},
      {"group", View::Group, {server}, {serverLine}},
      {"Null state and group",
       View::All,
       {server, {"2", "", "", kNull, kNull}},
       {serverOfAll, "_SERVER_2 | iTEST_STATE2 |  |  | "}},
      {"Null server name",
       View::All,
       {server, {"2", kNull, "x", "3", "g"}, server},
       {serverOfAll, "_SERVER_2 | iTEST_STATE3 |  |  | "},
       false},
      {"Null address", View::All, {{"2", "b", kNull, "3", "g"}, server}, {"_SERVER_2 | iTEST_STATE3 | b |  | "}, false},
      {"no image", View::Group, {server, {"2", "b", "x", "4", "g"}, server}, {serverLine, noServer}, false},
      {"state 0", View::Group, {{"2", "b", "x", "0", "g"}}, {noServer}, false},
      {"state -1", View::Group, {{"2", "b", "x", "-1", "g"}}, {noServer}, false},
      {"test", View::Tests, {test}, {testLine}},
      {"never ran",
       View::Tests,
       {{"2", "t", "2", kNull, "not run yet", kNull}},
       {"_TEST_2 | iTEST_STATE2 | t |  not run yet -  | "}},
      {"Null state word",
       View::Tests,
       {{"2", "t", "1", kNull, kNull, "r"}, test},
       {"_TEST_2 | iTEST_STATE1 | t |   - r | ", testLine}},
      {"Null test state", View::Tests, {test, {"2", "t", kNull, kNull, "x", "r"}, test}, {testLine, noTest}, false},
      {"Null test name", View::Tests, {{"2", kNull, "1", kNull, "x", "r"}}, {"_TEST_2 | iTEST_STATE1 |  |  | "}, false},
      {"log", View::Log, {log, log}, {logLine, logLine}},
      {"Null description", View::Log, {log, {kNull, "1", "1000"}}, {logLine, " |  |  |  | "}, false},
      {"Null severity", View::Log, {{"x", kNull, "1000"}, log}, {" |  | x |  | "}, false},
      {"Null date", View::Log, {{"x", "1", kNull}, log}, {" | iSEVERITY1 | x |  | "}, false}};
  for (const FillCase& c : cases) {
    SCOPED_TRACE(c.name);
    NodeImages images(TestIcon);
    ContentRows rows;
    if (c.whole) {
      Fill(c.view, rows, images, c.records);
    } else {
      EXPECT_THROW(Fill(c.view, rows, images, c.records), Error);
    }
    EXPECT_EQ(Lines(rows, images), Texts(c.lines).replaceInStrings(Q("%1"), DateTimeText(1000)));
  }
}

class ContentViewsTest : public ::testing::Test {
 protected:
  QStringList Shown() { return Lines(model_.Rows(), model_.Images()); }
  // Caption and width of each column as the view has them.
  QStringList Columns() {
    QStringList columns;
    for (int i = 0; i < model_.columnCount(); ++i) {
      columns << model_.headerData(i, Qt::Horizontal).toString() + u' ' + QString::number(view_.columnWidth(i));
    }
    return columns;
  }

  MemoryStore memory_;
  store::FaultyStores faulty_{memory_()};
  ContentListModel model_{TestIcon};
  ContentList view_{model_};
  ContentViews views_{faulty_, model_};
};

TEST_F(ContentViewsTest, EachViewHasItsColumnsAndRows) {
  QAbstractItemModelTester tester(&model_, QAbstractItemModelTester::FailureReportingMode::Fatal);
  views_.ShowServerList(0);
  EXPECT_EQ(Columns(), Texts({"Server 150", "IPAddress 100", "Group 120"}));
  EXPECT_EQ(Shown(), Texts({"_SERVER_13 | iTEST_STATE2 | Alpha | 10.0.0.3 | ",
                            "_SERVER_11 | iTEST_STATE2 | alpha | 10.0.0.1 | Berlin",
                            "_SERVER_12 | iTEST_STATE2 | beta | 10.0.0.2 | "}));
  EXPECT_EQ(model_.index(1, 0).data(Qt::AccessibleDescriptionRole), Q("_SERVER_11"));
  views_.ShowServerList(1);
  EXPECT_EQ(Columns(), Texts({"Server 150", "IPAddress 100"}));
  EXPECT_EQ(Shown(), Texts({"_SERVER_11 | iTEST_STATE2 | alpha | 10.0.0.1 | "}));
  views_.ShowTestList(11);
  const QStringList tests = Texts(
      {"_TEST_1 | iTEST_STATE2 | first |  not run yet -  | ", "_TEST_2 | iTEST_STATE2 | second |  not run yet -  | "});
  EXPECT_EQ(Columns(), Texts({"Test 120", "Last execution 380"}));
  EXPECT_EQ(Shown(), tests);
  views_.ShowTestList(11);
  EXPECT_EQ(Shown(), tests);
  views_.ShowLogList();
  EXPECT_EQ(Columns(), Texts({"Description 320", "Date 150"}));
  EXPECT_EQ(Shown(), QStringList());
  views_.Clear();
  EXPECT_EQ(Columns(), QStringList());
}

TEST_F(ContentViewsTest, WidthsComeBackWithEveryFill) {
  views_.ShowTestList(11);
  view_.setColumnWidth(0, 300);
  views_.ShowTestList(11);
  EXPECT_EQ(view_.columnWidth(0), 120);
}

TEST_F(ContentViewsTest, FailedQueryLeavesColumnsAndNoOldRows) {
  views_.ShowServerList(0);
  for (const QString& operation :
       Words("ServerStore.GetAllServers ServerStore.GetServersByGroup TestStore.GetTestsByServer LogStore.GetLogs")) {
    faulty_.ThrowFrom(operation);
  }
  EXPECT_THROW(views_.ShowServerList(0), Error);
  EXPECT_EQ(Columns().size(), 3);
  EXPECT_EQ(Shown(), QStringList());
  EXPECT_THROW(views_.ShowServerList(1), Error);
  EXPECT_EQ(Columns().size(), 2);
  EXPECT_THROW(views_.ShowTestList(11), Error);
  EXPECT_EQ(Columns(), Texts({"Test 120", "Last execution 380"}));
  EXPECT_THROW(views_.ShowLogList(), Error);
  EXPECT_EQ(Columns(), Texts({"Description 320", "Date 150"}));
  EXPECT_EQ(Shown(), QStringList());
}

TEST_F(ContentViewsTest, LogShowsOldestFirstAndEndsAtAMissingImage) {
  ASSERT_TRUE(memory_().Log().AddLog(3, Q("older")));
  ASSERT_TRUE(memory_().Log().AddLog(1, Q("newer")));
  views_.ShowLogList();
  ASSERT_EQ(model_.rowCount(), 2);
  EXPECT_EQ(model_.index(0, 0).data().toString(), Q("older"));
  EXPECT_EQ(model_.index(0, 1).data().toString().size(), Q("yyyy-MM-dd HH:mm:ss").size());

  ContentListModel partial([](const QString& key) { return TestIcon(key == u"iSEVERITY1" ? QString() : key); });
  EXPECT_THROW(ContentViews(faulty_, partial).ShowLogList(), Error);
  ASSERT_EQ(partial.rowCount(), 2);
  EXPECT_EQ(partial.index(1, 0).data().toString(), Q("newer"));
  EXPECT_FALSE(partial.index(1, 0).data(Qt::DecorationRole).isValid());
  EXPECT_EQ(partial.index(1, 1).data().toString(), QString());
}

TEST_F(ContentViewsTest, RowsHaveOneHeightWhateverTheirText) {
  view_.show();
  const auto heightOf = [this](const QString& text) {
    ContentRows rows;
    rows.AddColumn(Q("Description"), 320);
    rows.AddRow();
    rows.AppendText(0, text.toStdString());
    model_.Replace(std::move(rows));
    EXPECT_EQ(model_.index(0, 0).data().toString(), text) << "nothing is lost";
    return view_.visualRect(model_.index(0, 0)).height();
  };
  const int height = heightOf(Q("plain"));
  EXPECT_EQ(heightOf(Q("a\nb").repeated(200)), height);
  EXPECT_EQ(heightOf(QString(10000, u'x')), height);
}

}  // namespace
}  // namespace quarl::tree
