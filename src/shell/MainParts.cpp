#include "shell/MainParts.h"

#include "netscan/api/clsNetAPI.h"

namespace quarl::shell {
namespace {

bool Answers(const QString& address) {
  return netscan::clsNetAPI().Ping(address) == 0;
}

tree::Common::Messages MessagesOf(const ui::MessageBoxes& boxes) {
  return {.failure = [boxes](Text id) { boxes.Stop(id, ui::MessageBoxes::Title::Application); },
          .error = [boxes](const QString& text) { boxes.Plain(text); }};
}

}  // namespace

MainCommands::MainCommands(QWidget& window, const MainControls& controls, store::Stores& stores, const MainPorts& ports,
                           const ui::MessageBoxes& boxes)
    : common(stores, *controls.KVCTree, MessagesOf(boxes)),
      entities(editors::EditorContext{&window, stores, *controls.KVCTree, ports.selection, clock, Answers}, common,
               ports.commands),
      logs(stores, *controls.KVCTree, ports.selection, window),
      toolbar(controls, stores, ports.selection) {}

MainHands::MainHands(const MainControls& controls, store::Stores& stores, const InstallPaths& paths,
                     const MainPorts& ports)
    : tree(*controls.KVCTree, stores, ports.selection, ports.popUps),
      drag(*controls.KVCTree, stores, paths, *controls.scrollTimer),
      list(*controls.KVCContent, *controls.KVCTree, ports.selection, ports.popUps),
      treeEvents(*controls.KVCTree, ports.treeEvents),
      listEvents(*controls.KVCContent, ports.listEvents) {}

}  // namespace quarl::shell
