#include "netscan/ServerImport.h"

#include <QScopeGuard>

#include "base/NodeKey.h"

namespace quarl::netscan {

// Messages of the tests are kept for later: other programs wait for the store while a server is being added.
ServerImport::ServerImport(const WizardContext& context, ui::MessageBoxes boxes, qint32 idGroup,
                           std::vector<qint32> testTypes)
    : context_(context),
      boxes_(std::move(boxes)),
      idGroup_(idGroup),
      testTypes_(std::move(testTypes)),
      common_(context.stores, context.tree,
              {.failure = [this](Text id) { refusals_.push_back(id); },
               .error =
                   [this](const QString& text) {
                     if (!error_) error_ = text;
                   }}) {}

bool ServerImport::Add(const QString& name, const QString& address) {
  refusals_.clear();
  error_.reset();
  if (!AddToBoth(name, address)) {
    boxes_.Stop(Text::AddServerFailed, ui::MessageBoxes::Title::Application);
    return false;
  }
  for (const Text refusal : refusals_) boxes_.Stop(refusal, ui::MessageBoxes::Title::Application);
  return true;
}

bool ServerImport::AddToBoth(const QString& name, const QString& address) {
  const auto change = context_.stores.BeginChange();
  const qint32 id = context_.stores.Servers().AddServer(name, address, idGroup_);
  if (id <= 0) return false;
  tree::ObjectTreeModel& nodes = context_.tree.Nodes();
  const QString key = NodeKey::Make(NodeKind::Server, id);
  nodes.InsertSorted(NodeKey::Make(NodeKind::Group, idGroup_), key, name, QStringLiteral("iSERVER"));
  auto takeBack = qScopeGuard([&] { nodes.RemoveNode(key); });
  for (const qint32 idTestType : testTypes_) {
    common_.AddTestToServer(id, idTestType);
    if (error_) throw Error(*error_);
  }
  change->Commit();
  takeBack.dismiss();
  return true;
}

}  // namespace quarl::netscan
