#include "plugins/ManagerDialog.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>

#include "base/NullToEmpty.h"
#include "plugins/ModulePicture.h"
#include "plugins/contract/CFileVersionInfo.h"
#include "plugins/contract/ModuleFile.h"
#include "ui/BusyPointer.h"
#include "ui/ConsoleLog.h"
#include "ui/OneLine.h"
#include "ui/PictureIcon.h"

namespace quarl::plugins {
namespace {

enum Column { kProduct, kAuthor, kVersion, kDll, kId, kColumnCount };

constexpr qsizetype kLongestText = 200;
constexpr int kWidestColumn = 40;  // average characters
constexpr int kColumnGap = 2;      // average characters
constexpr int kListWidth = 72;     // average characters
constexpr int kListRows = 10;

QString ImageKey(int row) {
  return QStringLiteral("Img%1").arg(row);
}

// The list with the keys that it takes besides Qt's: Delete, and Down to the first row where none is selected. Qt makes
// that row the current one when the list gets the focus, without selecting it, and an arrow would pass it over.
class ModuleList : public QTreeWidget {
 public:
  using QTreeWidget::QTreeWidget;
  QPushButton* onDelete = nullptr;

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    if (event->matches(QKeySequence::Delete) && onDelete) {
      onDelete->click();
    } else if (event->key() == Qt::Key_Down && selectedItems().isEmpty()) {
      if (topLevelItemCount() > 0) setCurrentItem(topLevelItem(0));
    } else {
      QTreeWidget::keyPressEvent(event);
    }
  }
};

}  // namespace

ManagerDialog::ManagerDialog(const ManagerKind& kind, const ManagerContext& context)
    : QDialog(context.window),
      kind_(kind),
      context_(context),
      boxes_(this),
      trap_(QLatin1String(kind.window), boxes_),
      pluginList_(new ModuleList(this)) {
  setObjectName(QLatin1String(kind.window));
  setWindowTitle(QLatin1String(kind.caption));
  BuildControls();
}

// --- Controls ---

void ManagerDialog::BuildControls() {
  auto* label = new QLabel(QLatin1String(kind_.label), this);
  label->setObjectName(QStringLiteral("lblLabel1"));
  label->setBuddy(pluginList_);

  pluginList_->setObjectName(QStringLiteral("pluginList"));
  pluginList_->setAccessibleName(QStringLiteral("pluginList"));
  pluginList_->setRootIsDecorated(false);
  pluginList_->setItemsExpandable(false);
  pluginList_->setUniformRowHeights(true);
  pluginList_->setAllColumnsShowFocus(true);
  pluginList_->setSizeAdjustPolicy(QAbstractScrollArea::AdjustToContents);
  pluginList_->setMinimumWidth(fontMetrics().averageCharWidth() * kListWidth);
  pluginList_->setMinimumHeight(fontMetrics().lineSpacing() * kListRows);
  connect(pluginList_, &QTreeWidget::itemSelectionChanged, this, [this] { pluginList_ItemClick(); });
  connect(pluginList_, &QTreeWidget::itemDoubleClicked, this, [this] { About_->click(); });

  auto* column = new QVBoxLayout(this);
  column->addWidget(label);
  column->addWidget(pluginList_, 1);
  column->addWidget(BuildButtons());
  static_cast<ModuleList*>(pluginList_)->onDelete = RemovePlugin_;
}

QWidget* ManagerDialog::BuildButtons() {
  auto* bar = new QWidget(this);
  auto* line = new QHBoxLayout(bar);
  line->setContentsMargins({});
  const auto add = [&](const char* name, const char* caption, auto procedure) {
    auto* button = new QPushButton(QLatin1String(caption), bar);
    button->setObjectName(QLatin1String(name));
    connect(button, &QPushButton::clicked, this, procedure);
    line->addWidget(button);
    return button;
  };
  addPlugin_ = add("addPlugin", "Add ...", [this] { addPlugin_Click(); });
  RemovePlugin_ = add("RemovePlugin", "Remove", [this] { RemovePlugin_Click(); });
  About_ = add("About", "About ...", [this] { About_Click(); });
  line->addStretch();
  add("OKButton", "OK", [this] { OKButton_Click(); })->setDefault(true);
  return bar;
}

void ManagerDialog::Run() {
  Form_Load();
  pluginList_->setFocus();
  exec();
}

// --- The list ---

void ManagerDialog::Form_Load() {
  TrapOverVisible()("Form_Load", [&] {
    const ui::BusyPointer busy(this);
    FillList();
  });
  pluginList_ItemClick();
}

void ManagerDialog::FillList() {
  pluginList_->clear();
  pluginList_->setHeaderLabels({});
  pluginList_->setColumnCount(0);
  pluginImgList_ = {};
  store::RecordSet types = Types();
  for (int row = 1; !types.Eof(); types.MoveNext(), ++row) {
    const QPixmap picture = LoadModulePicture(FileOf(NullToEmpty(types.Value("Module")).toString()));
    if (!picture.isNull()) pluginImgList_.Add(ImageKey(row), ui::PictureIcon(picture));
  }
  pluginList_->setColumnCount(kColumnCount);
  // The last title is the same in both dialogs.
  pluginList_->setHeaderLabels({QLatin1String(kind_.column), QStringLiteral("Author"), QStringLiteral("Version"),
                                QStringLiteral("DLL"), QStringLiteral("IDTestType")});
  types = Types();
  for (int row = 1; !types.Eof(); types.MoveNext(), ++row) {
    const QString module = NullToEmpty(types.Value("Module")).toString();
    addModule(FileOf(module), row, types.Value(kind_.idField).value<qint32>(), module);
  }
  FitColumns();
}

void ManagerDialog::addModule(const QString& path, int row, qint32 id, const QString& module) {
  TrapOverVisible()("addModule", [&] {
    CFileVersionInfo info;
    info.SetFullPathName(path);
    auto* item = new QTreeWidgetItem(pluginList_);
    const auto set = [item](int column, const QString& text) {
      item->setText(column, ui::OneLine(text, kLongestText));
    };
    set(kProduct, info.ProductName());
    if (pluginImgList_.Contains(ImageKey(row))) item->setIcon(kProduct, pluginImgList_.Icon(ImageKey(row)));
    set(kAuthor, info.CompanyName());
    set(kVersion, info.VerProduct());
    set(kDll, module);
    item->setData(kDll, Qt::UserRole, module);
    set(kId, QString::number(id));
  });
}

void ManagerDialog::FitColumns() {
  const int character = fontMetrics().averageCharWidth();
  for (int column = 0; column < kColumnCount; ++column) {
    pluginList_->resizeColumnToContents(column);
    const int width = pluginList_->columnWidth(column) + kColumnGap * character;
    pluginList_->setColumnWidth(column, qMin(width, kWidestColumn * character));
  }
}

QTreeWidgetItem* ManagerDialog::SelectedRow() const {
  return pluginList_->selectedItems().value(0);
}

void ManagerDialog::SelectRow(int row) {
  if (QTreeWidgetItem* item = pluginList_->topLevelItem(row)) pluginList_->setCurrentItem(item);
}

void ManagerDialog::pluginList_ItemClick() {
  trap_("pluginList_ItemClick", [&] {
    const bool selected = SelectedRow() != nullptr;
    About_->setEnabled(selected);
    RemovePlugin_->setEnabled(selected);
  });
}

// --- Commands ---

void ManagerDialog::addPlugin_Click() {
  trap_("addPlugin_Click", [&] {
    const QString file = AskModuleFile();
    if (!file.isEmpty()) AddModuleFile(file);
  });
}

QString ManagerDialog::AskModuleFile() {
  QFileDialog dialog(this, LoadText(Text::AddPluginTitle), lastFolder_, QStringLiteral("Quarl modules (*.dll)"));
  dialog.setObjectName(QStringLiteral("CommonDialog"));
  dialog.setFileMode(QFileDialog::ExistingFile);
  if (dialog.exec() != QDialog::Accepted) return {};
  QString file = dialog.selectedFiles().value(0);
  lastFolder_ = QFileInfo(file).path();
  return file;
}

void ManagerDialog::AddModuleFile(const QString& file) {
  CFileVersionInfo info;
  info.SetFullPathName(file);
  if (!(context_.stores.System().*kind_.add)(file, info.ProductName())) {
    // The message does not say what is wrong with the file.
    const QString defect = InspectModule(file);
    qCWarning(ui::consoleLog).noquote() << "Not added:" << file
                                        << (defect.isEmpty() ? QStringLiteral("Its name is taken.") : defect);
    boxes_.Stop(Text::AddPluginFailed, ui::MessageBoxes::Title::Application);
    return;
  }
  int last = -1;
  for (store::RecordSet types = Types(); !types.Eof(); types.MoveNext()) ++last;
  Form_Load();
  SelectRow(last);
}

void ManagerDialog::RemovePlugin_Click() {
  trap_("RemovePlugin_Click", [&] {
    if (boxes_.Confirm(Text::ConfirmRemovePlugin, ui::MessageBoxes::Icon::Question)) RemoveSelected();
  });
}

void ManagerDialog::RemoveSelected() {
  QTreeWidgetItem* row = SelectedRow();
  if (!row) return;
  if (!(context_.stores.System().*kind_.remove)(row->text(kId).toInt())) {
    boxes_.Stop(Text::PluginInUse);
    return;
  }
  const int place = pluginList_->indexOfTopLevelItem(row);
  Form_Load();
  SelectRow(qMin(place, pluginList_->topLevelItemCount() - 1));
}

void ManagerDialog::About_Click() {
  trap_("About_Click", [&] {
    const QTreeWidgetItem* row = SelectedRow();
    if (!row) return;
    QString path = PathText(row->data(kDll, Qt::UserRole).toString());
    std::ignore = context_.calls.About(kind_.kind, path);
  });
}

void ManagerDialog::OKButton_Click() {
  trap_("OKButton_Click", [&] { accept(); });
}

QString ManagerDialog::FileOf(const QString& module) const {
  try {
    return InstallPaths::Resolve(PathText(module));
  } catch (const Error&) {
    return {};  // a name that leads out of the folder is a row, too
  }
}

QString ManagerDialog::PathText(const QString& module) const {
  return InstallPaths::ModulePath(context_.paths.ApplicationFolder(), ModuleCallSite::About, kind_.kind, module);
}

ui::ErrorTrap ManagerDialog::TrapOverVisible() {
  return isVisible() ? trap_ : ui::ErrorTrap(QLatin1String(kind_.window), ui::MessageBoxes(parentWidget()));
}

}  // namespace quarl::plugins
