#include <gtest/gtest.h>

#include <QDateTime>

#include "store/RecordSet.h"
#include "store/StoreError.h"
#include "support/Text.h"

namespace quarl::store {
namespace {

RecordSet ThreeRows() {
  RecordSet rows(std::make_shared<const FieldList>(FieldList{
      {"IDTest", FieldType::Integer}, {"TestName", FieldType::Text}, {"LastExecution", FieldType::DateTime}}));
  for (const int id : {7, -3, 2147483647}) {
    rows.AppendInteger(id);
    rows.AppendText("t" + std::to_string(id));
    rows.AppendNull();
  }
  return rows;
}

TEST(RecordSetTest, FindGoesForwardToTheFirstMatchOrToTheEnd) {
  const struct {
    const char* criterion;
    const char* name;  // "" = at the end
  } rows[] = {
      {"[IDTest] = 7", "t7"},       {"[IDTest] = -3", "t-3"}, {"[IDTest]=2147483647", "t2147483647"},
      {"  [IDTest]  =  7  ", "t7"}, {"[IDTest] = 8", ""},     {"[IDTest] = 9223372036854775807", ""},
      {"[LastExecution] = 0", ""},  // Null equals nothing
  };
  for (const auto& row : rows) {
    RecordSet set = ThreeRows();
    set.Find(QString::fromLatin1(row.criterion));
    EXPECT_EQ(set.Eof() ? QString() : set.Value("TestName").toString(), QString::fromLatin1(row.name)) << row.criterion;
  }
  RecordSet set = ThreeRows();
  set.MoveNext();
  set.Find(Q("[IDTest] = 7"));
  EXPECT_TRUE(set.Eof());
}

TEST(RecordSetTest, OtherCriteriaAreErrorsThatLeaveTheCursor) {
  for (const char* criterion : {"", "IDTest = 7", "[IDTest] = ", "[IDTest] = x", "[IDTest] > 7", "[Other] = 7",
                                "[IDTest] = 7 OR 1", "[IDTest] = 99999999999999999999", "[TestName] = 7", "[] = 7"}) {
    RecordSet set = ThreeRows();
    EXPECT_THROW(set.Find(QString::fromLatin1(criterion)), StoreError) << criterion;
    EXPECT_EQ(set.Value("IDTest"), QVariant(7LL)) << criterion;
  }
}

TEST(RecordSetTest, ReadingWhereNothingIsIsAnError) {
  RecordSet set = ThreeRows();
  EXPECT_THROW(set.Value("idtest"), StoreError);
  EXPECT_THROW(set.Value(3), StoreError);
  EXPECT_THROW(set.Value(-1), StoreError);
  EXPECT_THROW(set.Integer(2), StoreError);
  EXPECT_THROW(set.Integer(1), StoreError);
  EXPECT_THROW(set.Utf8(0), StoreError);
  EXPECT_FALSE(set.Value("LastExecution").isValid());
  set.Find(Q("[IDTest] = 0"));
  EXPECT_THROW(set.MoveNext(), StoreError);
  EXPECT_THROW(set.Value("IDTest"), StoreError);
  set.Close();
  set.Close();
  EXPECT_THROW(set.Eof(), StoreError);
  EXPECT_THROW(set.Find(Q("[IDTest] = 7")), StoreError);
}

}  // namespace
}  // namespace quarl::store
