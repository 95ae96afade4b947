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

MainCommands::MainCommands(QWidget& window, MainControls& controls, const MainServices& services,
                           const MainPorts& ports, const ui::MessageBoxes& boxes)
    : common(services.stores, *controls.KVCTree, MessagesOf(boxes)),
      context{&window, services.stores, *controls.KVCTree, ports.selection, clock, Answers},
      entities(context, common, ports.commands),
      properties(context, services.modules),
      plugins{&window, services.stores, services.paths, services.modules},
      scan{&window, services.stores, *controls.KVCTree, ports.selection, services.paths, controls.KCVImageList},
      logs(services.stores, *controls.KVCTree, ports.selection, window),
      toolbar(controls, services.stores, ports.selection) {}

MainHands::MainHands(const MainControls& controls, store::Stores& stores, const InstallPaths& paths,
                     const MainPorts& ports)
    : tree(*controls.KVCTree, stores, ports.selection, ports.popUps),
      drag(*controls.KVCTree, stores, paths, *controls.scrollTimer),
      list(*controls.KVCContent, *controls.KVCTree, ports.selection, ports.popUps),
      treeEvents(*controls.KVCTree, ports.treeEvents),
      listEvents(*controls.KVCContent, ports.listEvents) {}

}  // namespace quarl::shell
