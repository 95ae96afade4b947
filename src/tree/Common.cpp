#include "tree/Common.h"

namespace quarl::tree {

Common::Common(store::Stores& stores, ObjectTree& tree, Messages messages)
    : stores_(stores), tree_(tree), messages_(std::move(messages)) {}

void Common::AddTestToServer(qint32 idServer, qint32 idTestType) {
  try {
    AddTest(idServer, idTestType);
  } catch (const Error& error) {
    messages_.error(error.Description());
  }
}

void Common::AddTest(qint32 idServer, qint32 idTestType) {
  store::TestStore& tests = stores_.Tests();
  const qint32 idTest = tests.AddTest(idServer, idTestType, QString());
  if (idTest < 1) {
    messages_.failure(Text::AddTestFailed);
    return;
  }
  store::RecordSet records = tests.GetTestsByServer(idServer);
  records.Find(QStringLiteral("[IDTest] = %1").arg(idTest));
  if (records.Eof()) return;
  const QString text = records.Value("TestType").toString();
  records.Close();

  ObjectTreeModel& nodes = tree_.Nodes();
  const QString folder = NodeKey::Make(NodeKind::TestsFolder, idServer);
  if (!nodes.Contains(folder)) {
    nodes.AddNode(NodeKey::Make(NodeKind::Server, idServer), folder, QStringLiteral("TESTS"), QStringLiteral("iTEST"));
  }
  const QString key = NodeKey::Make(NodeKind::Test, idTest);
  nodes.AddNode(folder, key, text, QStringLiteral("iTEST%1").arg(idTestType));
  tree_.EnsureVisible(key);
}

}  // namespace quarl::tree
