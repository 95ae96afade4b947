#pragma once

#include "store/TestStore.h"
#include "store/sql/CheckRequests.h"
#include "store/sql/Database.h"

namespace quarl::store::sql {

class SqlTestStore final : public TestStore {
 public:
  SqlTestStore(Database& database, CheckRequests& requests) : database_(database), requests_(requests) {}
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
  CheckRequests& requests_;
};

}  // namespace quarl::store::sql
