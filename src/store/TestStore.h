#pragma once

#include <QString>
#include <optional>

#include "store/RecordSet.h"

namespace quarl::store {

/// The tests configured on servers. For threads and errors see SystemConfig.
class TestStore {
 public:
  virtual ~TestStore() = default;

  /// Asks the service to run the test now, and waits for the results, at most ten
  /// seconds. False: no service runs, there is no such test, or the results are not in.
  virtual bool CheckTest(qint32 idTest) = 0;
  /// Adds a test under its type's name.
  /// @param properties the property string it starts with.
  /// @return the new id, or a number below 1: no such server or type, or the ids are used up.
  [[nodiscard]] virtual qint32 AddTest(qint32 idServer, qint32 idTestType, const QString& properties) = 0;
  [[nodiscard]] virtual bool RemoveTest(qint32 idTest) = 0;
  /// IDTest, TestName, IDTestType, TestType, IDTestState (1 passed, 2 not run yet, 3 failed), LastExecution (a time,
  /// Null), TestState (the state's word), LastResult (text, Null); in the order in which they were added.
  [[nodiscard]] virtual RecordSet GetTestsByServer(qint32 idServer) = 0;
  /// The string that only the test's module understands; NUL characters in it are kept.
  [[nodiscard]] virtual std::optional<QString> GetTestProperties(qint32 idTest) = 0;
  virtual bool SetTestProperties(qint32 idTest, const QString& properties) = 0;
  /// The module file name of the test's type.
  [[nodiscard]] virtual std::optional<QString> GetTestModule(qint32 idTest) = 0;
  virtual bool RenameTest(qint32 idTest, const QString& name) = 0;
};

}  // namespace quarl::store
