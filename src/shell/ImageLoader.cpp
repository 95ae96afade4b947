#include "shell/ImageLoader.h"

#include <QFileInfo>
#include <QPixmap>
#include <array>

#include "base/Error.h"
#include "base/NullToEmpty.h"
#include "plugins/ModulePicture.h"
#include "shell/MainControls.h"
#include "shell/ToolbarTable.h"
#include "store/Stores.h"
#include "ui/PictureIcon.h"

namespace quarl::shell {
namespace {

constexpr std::array kFixedImages{"iSERVERGROUP", "iSERVER", "iLOGS", "iCONFIGURATION", "iALERT", "iTEST", "iOPTIONS"};

}  // namespace

ImageLoader::ImageLoader(MainControls& controls, store::Stores& stores, InstallPaths paths)
    : controls_(controls), stores_(stores), paths_(std::move(paths)) {}

void ImageLoader::LoadToolbarImages() {
  for (const ToolbarRow& row : kToolbarRows) {
    const QString key = QLatin1String(row.image);
    const QIcon icon = ui::PictureIcon(key);
    if (icon.isNull()) continue;
    controls_.KCVImageList.Add(key, icon);
    controls_.KVCImageListDisabled.Add(key, ui::GreyedIcon(icon));
    controls_.Button(QLatin1String(row.key))
        ->setIcon(ui::WithDisabled(controls_.KCVImageList.Icon(key), controls_.KVCImageListDisabled.Icon(key)));
  }
}

void ImageLoader::LoadImages() {
  for (const char* key : kFixedImages) AddPicture(QLatin1String(key));
  AddTestTypes();
  AddAlertTypes();
  AddStates(QStringLiteral("iSEVERITY"));
  AddStates(QStringLiteral("iTEST_STATE"));
  RequireToolbarImages();
}

void ImageLoader::AddPicture(const QString& key) {
  controls_.KCVImageList.Add(key, ui::PictureIcon(key));
}

void ImageLoader::AddStates(const QString& prefix) {
  for (int state = 1; state <= 3; ++state) AddPicture(prefix + QString::number(state));
}

void ImageLoader::AddTestTypes() {
  for (store::RecordSet types = stores_.System().GetTestTypes(); !types.Eof(); types.MoveNext()) {
    AddType(QStringLiteral("iTEST") + types.Value("IDTestType").toString(), ModuleKind::Test, types.Value("Module"));
  }
}

void ImageLoader::AddAlertTypes() {
  for (store::RecordSet types = stores_.System().GetAlertTypes(); !types.Eof(); types.MoveNext()) {
    AddType(QStringLiteral("iALERT") + types.Value("IDAlertType").toString(), ModuleKind::Alert, types.Value("Module"));
  }
}

void ImageLoader::AddType(const QString& key, ModuleKind kind, const QVariant& module) {
  const QString path = InstallPaths::Resolve(InstallPaths::ModulePath(
      paths_.ApplicationFolder(), ModuleCallSite::Picture, kind, NullToEmpty(module).toString()));
  const QPixmap picture = plugins::LoadModulePicture(path);
  if (picture.isNull()) {
    throw Error(QFileInfo::exists(path)
                    ? QStringLiteral("The plug-in module %1 has no \"ICON\" bitmap that can be read.").arg(path)
                    : QStringLiteral("The plug-in module %1 is missing.").arg(path));
  }
  controls_.KCVImageList.Add(key, ui::PictureIcon(picture));
}

void ImageLoader::RequireToolbarImages() const {
  for (const ToolbarRow& row : kToolbarRows) std::ignore = controls_.KCVImageList.Icon(QLatin1String(row.image));
}

}  // namespace quarl::shell
