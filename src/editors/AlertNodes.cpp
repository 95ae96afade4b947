#include "editors/AlertNodes.h"

#include "base/NodeKey.h"
#include "base/NullToEmpty.h"

namespace quarl::editors {

AlertNodes::AlertNodes(store::Stores& stores, tree::ObjectTree& tree, ui::MessageBoxes boxes)
    : stores_(stores), tree_(tree), boxes_(std::move(boxes)) {}

bool AlertNodes::IsRefused(qint32 idAlert) const {
  if (idAlert < 1) boxes_.Stop(Text::AddAlertFailed, ui::MessageBoxes::Title::Application);
  return idAlert < 1;
}

void AlertNodes::AddServerAlertNode(qint32 idServer, qint32 idAlertType) {
  store::AlertStore& alerts = stores_.Alerts();
  const qint32 idAlert = alerts.AddServerAlert(idServer, idAlertType, QString());
  if (IsRefused(idAlert)) return;
  AddNode(NodeKey::Make(NodeKind::Server, idServer), idAlert, idAlertType, alerts.GetAlertsByServer(idServer));
}

void AlertNodes::AddGroupAlertNode(qint32 idGroup, qint32 idAlertType) {
  store::AlertStore& alerts = stores_.Alerts();
  const qint32 idAlert = alerts.AddGroupAlert(idGroup, idAlertType, QString());
  if (IsRefused(idAlert)) return;
  AddNode(NodeKey::Make(NodeKind::Group, idGroup), idAlert, idAlertType, alerts.GetAlertsByGroup(idGroup));
}

void AlertNodes::AddNode(const QString& owner, qint32 idAlert, qint32 idAlertType, store::RecordSet alerts) {
  alerts.Find(QStringLiteral("[IDAlert] = %1").arg(idAlert));
  if (alerts.Eof()) return;
  const QString text = NullToEmpty(alerts.Value("AlertType")).toString();
  alerts.Close();

  tree::ObjectTreeModel& nodes = tree_.Nodes();
  const QString folder = NodeKey::Make(NodeKind::AlertsFolder, NodeKey::IdOf(owner));
  if (!nodes.Contains(folder)) {
    nodes.AddNode(owner, folder, QStringLiteral("ALERTS"), QStringLiteral("iALERT"));
  }
  const QString key = NodeKey::Make(NodeKind::Alert, idAlert);
  nodes.AddNode(folder, key, text, QStringLiteral("iALERT%1").arg(idAlertType));
  tree_.Select(key);
  tree_.EnsureVisible(key);
}

}  // namespace quarl::editors
