#include "shell/ToolbarDispatch.h"

#include <algorithm>
#include <array>
#include <tuple>

#include "base/NodeKey.h"
#include "shell/MainControls.h"
#include "store/Stores.h"
#include "tree/SelectionPort.h"

namespace quarl::shell {
namespace {

struct ItemOfButton {
  const char* key;
  const char* item;
};

constexpr std::array kItems{
    ItemOfButton{"GROUPADD", "mGroupAdd"},        ItemOfButton{"GROUPSUB", "mGroupRemove"},
    ItemOfButton{"SERVERADD", "mGroupAddServer"}, ItemOfButton{"SERVERSUB", "mServerRemove"},
    ItemOfButton{"TESTSUB", "mTestRemove"},       ItemOfButton{"ALERTSUB", "mAlertRemove"},
    ItemOfButton{"CHECKGROUP", "mGroupCheck"},    ItemOfButton{"CHECKSERVER", "mServerCheck"},
    ItemOfButton{"CHECKTEST", "mTestCheck"},
};

const char* PropertiesItem(NodeKind kind) {
  switch (kind) {
    case NodeKind::Group:
      return "mGroupProperties";
    case NodeKind::Server:
      return "mServerProperties";
    case NodeKind::Test:
      return "mTestProperties";
    case NodeKind::Alert:
      return "mAlertProperties";
    default:
      return nullptr;
  }
}

}  // namespace

void ToolbarDispatch::ButtonClick(const QString& key) {
  const QString name = key.toUpper();
  const auto* const row =
      std::find_if(kItems.begin(), kItems.end(), [&](const auto& each) { return name == QLatin1String(each.key); });
  if (row != kItems.end()) {
    controls_.Item(QLatin1String(row->item))->trigger();
  } else if (name == QLatin1String("PROPERTIES")) {
    Properties();
  } else if (name == QLatin1String("REFRESH")) {
    Refresh();
  } else if (name == QLatin1String("SSTART")) {
    std::ignore = stores_.System().StartService();
  } else if (name == QLatin1String("SSTOP")) {
    std::ignore = stores_.System().StopService();
  }
}

void ToolbarDispatch::ButtonMenuClick(const QString& key, int index) {
  const QString name = key.toUpper();
  if (name.startsWith(QLatin1String("TEST_"))) {
    Choose(QStringLiteral("mServerTest"), index);
  } else if (name.startsWith(QLatin1String("ALERT_"))) {
    const QString& selected = selection_.SelectedKey();
    if (!controls_.KVCTree->Nodes().Contains(selected)) return;
    const NodeKind kind = NodeKey::KindOf(selected);
    if (kind == NodeKind::Group) Choose(QStringLiteral("mGroupAlert"), index);
    if (kind == NodeKind::Server) Choose(QStringLiteral("mServerAlert"), index);
  }
}

void ToolbarDispatch::Choose(const QString& menuArray, int index) const {
  if (QAction* element = controls_.Element(menuArray, index)) element->trigger();
}

void ToolbarDispatch::Properties() {
  if (const char* item = PropertiesItem(NodeKey::KindOf(selection_.SelectedKey()))) {
    controls_.Item(QLatin1String(item))->trigger();
  }
}

void ToolbarDispatch::Refresh() {
  const QString key = controls_.KVCTree->SelectedKey();
  if (!key.isEmpty()) selection_.NodeClick(key);
}

}  // namespace quarl::shell
