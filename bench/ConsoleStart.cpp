#include <QApplication>

#include "FirstPaint.h"
#include "apps/StoreComposition.h"
#include "shell/Main.h"
#include "ui/ColourScheme.h"
#include "ui/PictureIcon.h"

// What the console does until its main window is painted, on the modules of the build's installed layout.
int main(int argc, char** argv) {
  const quarl::InstallPaths paths(QStringLiteral(QUARL_LAYOUT_DIR));
  quarl::apps::StoreComposition stores(paths);
  stores.OpenAhead();
  const QApplication app(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("Quarl Console"));
  QGuiApplication::setWindowIcon(quarl::ui::PictureIcon(QStringLiteral("quarl")));
  quarl::ui::FollowDesktopColourScheme();
  quarl::shell::Main window(stores, paths);
  const quarl::bench::FirstPaint first(window);
  window.Form_Load();
  window.show();
  return QApplication::exec();
}
