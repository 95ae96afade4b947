#include "shell/Main.h"

#include <QApplication>

#include "apps/StoreComposition.h"
#include "ui/ColourScheme.h"
#include "ui/PictureIcon.h"

int main(int argc, char** argv) {
  quarl::apps::StoreComposition stores;
  stores.OpenAhead();
  QApplication app(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("Quarl Console"));
  QCoreApplication::setApplicationVersion(QStringLiteral(QUARL_VERSION));
  QCoreApplication::setOrganizationName(QStringLiteral("Quarl"));
  QGuiApplication::setDesktopFileName(QStringLiteral("quarl-console"));

  QGuiApplication::setWindowIcon(quarl::ui::PictureIcon(QStringLiteral("quarl")));
  quarl::ui::FollowDesktopColourScheme();
  quarl::shell::Main window(stores, quarl::InstallPaths::OfThisProgram());
  window.Form_Load();
  window.show();
  return QApplication::exec();
}
