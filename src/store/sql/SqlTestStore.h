#pragma once

#include "store/TestStore.h"
#include "store/sql/Database.h"

namespace quarl::store::sql {

class SqlTestStore final : public TestStore {
 public:
  explicit SqlTestStore(Database& database) : database_(database) {}
  bool CheckTest(qint32 idTest) override;
  qint32 AddTest(qint32 idServer, qint32 idTestType, const QString& properties) override;
  bool RemoveTest(qint32 idTest) override;
  RecordSet GetTestsByServer(qint32 idServer) override;
  std::optional<QString> GetTestProperties(qint32 idTest) override;
  bool SetTestProperties(qint32 idTest, const QString& properties) override;
  std::optional<QString> GetTestModule(qint32 idTest) override;
  bool RenameTest(qint32 idTest, const QString& name) override;

 private:
  Database& database_;
};

}  // namespace quarl::store::sql
