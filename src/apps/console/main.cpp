#include "shell/Main.h"

#include <QApplication>

#include "apps/StoreComposition.h"
#include "apps/console/CheckWhenShown.h"
#include "plugins/ModuleWaitDialog.h"
#include "plugins/contract/HostedCalls.h"
#include "ui/ColourScheme.h"
#include "ui/PaintingPause.h"
#include "ui/PictureIcon.h"

int main(int argc, char** argv) {
  quarl::apps::StoreComposition stores;
  stores.SetPause(&quarl::ui::PaintingPause::Run);
  stores.OpenAhead();
  QApplication app(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("Quarl Console"));
  QCoreApplication::setApplicationVersion(QStringLiteral(QUARL_VERSION));
  QCoreApplication::setOrganizationName(QStringLiteral("Quarl"));
  QGuiApplication::setDesktopFileName(QStringLiteral("quarl-console"));

  QGuiApplication::setWindowIcon(quarl::ui::PictureIcon(QStringLiteral("quarl")));
  quarl::ui::FollowDesktopColourScheme();
  const quarl::InstallPaths paths = quarl::InstallPaths::OfThisProgram();
  quarl::plugins::ModuleWaitDialog wait(nullptr);
  quarl::plugins::HostedCalls modules(paths, wait);
  quarl::shell::Main window(stores, paths, modules);
  wait.SetWindow(&window);
  window.Form_Load();
  window.show();
  quarl::apps::CheckWhenShown(stores, window);
  return QApplication::exec();
}
