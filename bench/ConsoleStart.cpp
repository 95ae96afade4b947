#include "FirstPaint.h"
#include "apps/StoreComposition.h"
#include "apps/console/CheckWhenShown.h"
#include "plugins/contract/HostedCalls.h"
#include "shell/Main.h"
#include "ui/ColourScheme.h"
#include "ui/PictureIcon.h"

// What the console does until its main window is painted, on the modules of the build's installed layout.
int main(int argc, char** argv) {
  const quarl::InstallPaths paths(QStringLiteral(QUARL_LAYOUT_DIR));
  quarl::apps::StoreComposition stores(paths);
  stores.OpenAhead();
  quarl::bench::FirstPaint app(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("Quarl Console"));
  QGuiApplication::setWindowIcon(quarl::ui::PictureIcon(QStringLiteral("quarl")));
  quarl::ui::FollowDesktopColourScheme();
  quarl::plugins::PlainWait wait;
  quarl::plugins::HostedCalls modules(paths, wait);
  quarl::shell::Main window(stores, paths, modules);
  app.Await(window);
  window.Form_Load();
  window.show();
  quarl::apps::CheckWhenShown(stores, window);
  return QApplication::exec();
}
