#include "shell/CommandAvailability.h"

#include <array>

#include "base/NodeKey.h"
#include "shell/MainControls.h"

namespace quarl::shell {
namespace {

enum Where : quint8 { kRoot = 1, kGroup = 2, kServer = 4, kTest = 8, kAlert = 16, kLog = 32 };

struct Command {
  const char* name;
  bool button;
  int where;
};

constexpr bool kMenu = false;
constexpr bool kButton = true;

// The order is that in which the commands are disabled and enabled.
constexpr std::array kCommands{
    Command{"mGroupProperties", kMenu, kRoot | kGroup},
    Command{"mGroupAdd", kMenu, kRoot},
    Command{"GroupAdd", kButton, kRoot},
    Command{"mGroupRemove", kMenu, kGroup},
    Command{"GroupSub", kButton, kGroup},
    Command{"mGroupAddServer", kMenu, kRoot | kGroup},
    Command{"ServerAdd", kButton, kRoot | kGroup},
    Command{"mGroupAddAlert", kMenu, kRoot | kGroup},
    Command{"mGroupCheck", kMenu, kRoot | kGroup},
    Command{"CheckGroup", kButton, kRoot | kGroup},
    Command{"mGroupScanNet", kMenu, kRoot | kGroup},
    Command{"mServerProperties", kMenu, kServer},
    Command{"mServerRemove", kMenu, kServer},
    Command{"mServerCheck", kMenu, kServer},
    Command{"ServerSub", kButton, kServer},
    Command{"CheckServer", kButton, kServer},
    Command{"mTestProperties", kMenu, kTest},
    Command{"mTestRename", kMenu, kTest},
    Command{"mServerAddTest", kMenu, kServer},
    Command{"mTestRemove", kMenu, kTest},
    Command{"mTestCheck", kMenu, kTest},
    Command{"TestAdd", kButton, kServer},
    Command{"TestSub", kButton, kTest},
    Command{"CheckTest", kButton, kTest},
    Command{"mAlertProperties", kMenu, kAlert},
    Command{"mAlertRename", kMenu, kAlert},
    Command{"mServerAddAlert", kMenu, kServer},
    Command{"mAlertRemove", kMenu, kAlert},
    Command{"mAlertTest", kMenu, kAlert},
    Command{"AlertAdd", kButton, kRoot | kGroup | kServer},
    Command{"AlertSub", kButton, kAlert},
    Command{"Properties", kButton, kRoot | kGroup | kServer | kTest | kAlert},
    Command{"Refresh", kButton, kRoot | kGroup | kServer | kLog},
};

int PlaceOf(const QString& key) {
  switch (NodeKey::KindOf(key)) {
    case NodeKind::Log:
      return kLog;
    case NodeKind::Group:
      return key == NodeKey::kRoot ? kRoot : kGroup;
    case NodeKind::Server:
      return kServer;
    case NodeKind::Test:
      return kTest;
    case NodeKind::Alert:
      return kAlert;
    default:
      return 0;
  }
}

QAction* ActionOf(const MainControls& controls, const Command& command) {
  const auto name = QString::fromLatin1(command.name);
  return command.button ? controls.Button(name) : controls.Item(name);
}

}  // namespace

void CommandAvailability::Apply(const QString& key) const {
  for (const Command& command : kCommands) ActionOf(controls_, command)->setEnabled(false);
  const int place = PlaceOf(key);
  for (const Command& command : kCommands) {
    if (command.where & place) ActionOf(controls_, command)->setEnabled(true);
  }
}

}  // namespace quarl::shell
