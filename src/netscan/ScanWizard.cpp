#include "netscan/ScanWizard.h"

#include <QCoreApplication>
#include <QScopeGuard>

#include "base/NodeKey.h"
#include "base/NullToEmpty.h"
#include "netscan/ServerImport.h"
#include "plugins/ModulePicture.h"
#include "ui/BusyPointer.h"
#include "ui/PictureIcon.h"

namespace quarl::netscan {
namespace {

using Controls = WizardControls;

const QString kDefaultImage = QStringLiteral("iTEST");
constexpr int kTypeRole = Qt::UserRole + 1;   // of rows of TESTList: the type's id
constexpr int kImageRole = Qt::UserRole + 2;  // the key of its icon

}  // namespace

ScanWizard::ScanWizard(const WizardContext& context)
    : QDialog(context.window),
      context_(context),
      boxes_(this),
      trap_(QStringLiteral("ScanWizard"), boxes_),
      controls_(*this),
      rows_(controls_),
      runner_(context.setup, {.progress = [this](const ScanProgress& progress) { rows_.ShowProgress(progress); },
                              .finished = [this](const ScanResult& result) { ShowFound(result); }}) {
  setObjectName(QStringLiteral("ScanWizard"));
  setWindowTitle(QStringLiteral("Scan Network"));
  ConnectControls();
}

void ScanWizard::ConnectControls() {
  connect(controls_.Avanti, &QPushButton::clicked, this, [this] { Avanti_Click(); });
  connect(controls_.Indietro, &QPushButton::clicked, this, [this] { Indietro_Click(); });
  connect(controls_.Annulla, &QPushButton::clicked, this, [this] { Annulla_Click(); });
  connect(controls_.OS1, &QCheckBox::toggled, this, [this] { OS1_Click(); });
  connect(controls_.OS2, &QCheckBox::toggled, this, [this] { OS2_Click(); });
  connect(controls_.OS3, &QCheckBox::toggled, this, [this] { OS3_Click(); });
  connect(controls_.scanStop, &QPushButton::clicked, this, [this] { runner_.Stop(); });
}

void ScanWizard::Run() {
  if (!Form_Load()) return;
  exec();
  if (added_) context_.selection.NodeClick(context_.tree.SelectedKey());
}

// --- Opening ---

bool ScanWizard::Form_Load() {
  const ui::ErrorTrap trap(QStringLiteral("ScanWizard"), ui::MessageBoxes(context_.window));
  return trap("Form_Load", [&] {
    const QString key = context_.tree.SelectedKey();
    if (NodeKey::KindOf(key) != NodeKind::Group) throw Error(QStringLiteral("No server group is selected."));
    idGroup_ = NodeKey::IdOf(key);
    LoadLogo();
    ShowTests();
    rows_.Clear();
    ShowPage(Controls::kWelcome);
    return true;
  });
}

void ScanWizard::LoadLogo() {
  const QPixmap logo = ui::LargePicture(QStringLiteral("ScanWizardLogo"), devicePixelRatioF());
  if (logo.isNull()) throw Error(QStringLiteral("The picture \"ScanWizardLogo\" is missing."));
  controls_.wizardLogo->setPixmap(logo);
}

void ScanWizard::ShowTests() {
  const ui::ErrorTrap trap(QStringLiteral("ScanWizard"), ui::MessageBoxes(context_.window));
  trap("ShowTests", [&] {
    const ui::BusyPointer busy(context_.window);
    controls_.TESTList->clear();
    TESTImageList_ = {};
    TESTImageList_.Add(kDefaultImage, ui::PictureIcon(kDefaultImage));
    for (store::RecordSet types = context_.stores.System().GetTestTypes(); !types.Eof(); types.MoveNext()) {
      AddTestType(types.Value("IDTestType").value<qint32>(), NullToEmpty(types.Value("TestType")).toString(),
                  NullToEmpty(types.Value("Module")).toString());
    }
    controls_.TESTList->FitContents();
  });
}

void ScanWizard::AddTestType(qint32 id, const QString& name, const QString& module) {
  QPixmap picture;
  try {
    const QString path =
        InstallPaths::ModulePath(context_.paths.ApplicationFolder(), ModuleCallSite::About, ModuleKind::Test, module);
    picture = plugins::LoadModulePicture(InstallPaths::Resolve(path));
  } catch (const Error&) {
    // A name that leads out of the folder has no picture.
  }
  QTreeWidgetItem* row = controls_.TESTList->AddRow({name});
  const QString key =
      picture.isNull() ? kDefaultImage : QStringLiteral("Img%1").arg(controls_.TESTList->topLevelItemCount());
  if (!picture.isNull()) TESTImageList_.Add(key, ui::PictureIcon(picture));
  row->setIcon(0, TESTImageList_.Icon(key));
  row->setData(0, kTypeRole, id);
  row->setData(0, kImageRole, key);
}

// --- Pages ---

void ScanWizard::ShowPage(int page) {
  controls_.pages->setCurrentIndex(page);
  if (page == Controls::kSystems) controls_.OS1->setFocus();
  if (page == Controls::kServers) controls_.SERVERList->setFocus();
  if (page == Controls::kTests) controls_.TESTList->setFocus();
  if (page == Controls::kImport) {
    ShowPlan();
    controls_.Avanti->setFocus();
  }
  UpdateButtons();
}

void ScanWizard::UpdateButtons() {
  const bool importing = import_ != Import::No;
  controls_.Avanti->setText(Page() == Controls::kImport ? QStringLiteral("Finish") : QStringLiteral("Next >"));
  controls_.Indietro->setEnabled(Page() > Controls::kWelcome && !importing);
  const bool answered = Page() != Controls::kSystems || Filter() != 0;
  const bool scanning = Page() == Controls::kServers && runner_.Running();
  controls_.Avanti->setEnabled(answered && !scanning && !importing);
}

void ScanWizard::Avanti_Click() {
  trap_("Avanti_Click", [&] {
    if (Page() == Controls::kImport) {
      if (ImportTicked()) accept();
      return;
    }
    ShowPage(Page() + 1);
    if (Page() == Controls::kServers) ScanNetwork();
  });
}

void ScanWizard::Indietro_Click() {
  trap_("Indietro_Click", [&] {
    if (Page() == Controls::kServers) runner_.GiveUp();
    ShowPage(Page() - 1);
  });
}

void ScanWizard::Annulla_Click() {
  trap_("Annulla_Click", [&] { reject(); });
}

void ScanWizard::reject() {
  if (import_ != Import::No) {
    import_ = Import::Stopping;
    return;
  }
  runner_.GiveUp();
  QDialog::reject();
}

void ScanWizard::OS1_Click() {
  trap_("OS1_Click", [&] { UpdateButtons(); });
}

void ScanWizard::OS2_Click() {
  trap_("OS2_Click", [&] { UpdateButtons(); });
}

void ScanWizard::OS3_Click() {
  trap_("OS3_Click", [&] { UpdateButtons(); });
}

quint32 ScanWizard::Filter() const {
  quint32 filter = 0;
  if (controls_.OS1->isChecked()) filter |= kNtServer;
  if (controls_.OS2->isChecked()) filter |= kNtWorkstation;
  if (controls_.OS3->isChecked()) filter |= kWindows9x;
  return filter;
}

// --- The search ---

void ScanWizard::ScanNetwork() {
  trap_("ScanNetwork", [&] {
    rows_.Clear();
    known_ = KnownServers(context_.stores);
    runner_.Start();
    rows_.ShowProgress({});
  });
  UpdateButtons();
}

void ScanWizard::ShowFound(const ScanResult& result) {
  trap_("ScanNetwork", [&] { rows_.ShowResult(result, Filter(), known_); });
  UpdateButtons();
}

// --- The import ---

std::vector<qint32> ScanWizard::TickedTestTypes() const {
  std::vector<qint32> types;
  for (const int row : controls_.TESTList->Ticked())
    types.push_back(controls_.TESTList->topLevelItem(row)->data(0, kTypeRole).value<qint32>());
  return types;
}

void ScanWizard::ShowPlan() {
  const auto servers = controls_.SERVERList->Ticked().size();
  const auto tests = TickedTestTypes().size();
  QString text = QStringLiteral("No server is ticked: nothing will be added.");
  if (servers > 0) {
    text = servers == 1 ? QStringLiteral("1 server will be added, with ")
                        : QStringLiteral("%1 servers will be added, each with ").arg(servers);
    text += tests == 0   ? QStringLiteral("no test.")
            : tests == 1 ? QStringLiteral("1 test.")
                         : QStringLiteral("%1 tests.").arg(tests);
  }
  controls_.importState->setText(text);
}

// A type that was installed since start-up has no image in the tree's list yet.
void ScanWizard::LoadTestImages() {
  for (const int place : controls_.TESTList->Ticked()) {
    const QTreeWidgetItem& row = *controls_.TESTList->topLevelItem(place);
    const QString key = kDefaultImage + row.data(0, kTypeRole).toString();
    if (context_.images.Contains(key)) continue;
    context_.images.Add(key, TESTImageList_.Icon(row.data(0, kImageRole).toString()));
  }
}

bool ScanWizard::ImportTicked() {
  const std::vector<int> ticked = controls_.SERVERList->Ticked();
  LoadTestImages();
  ServerImport servers(context_, boxes_, idGroup_, TickedTestTypes());
  import_ = Import::Running;
  const auto end = qScopeGuard([this] {
    import_ = Import::No;
    controls_.importProgress->hide();
    UpdateButtons();
  });
  UpdateButtons();
  controls_.importProgress->setRange(0, static_cast<int>(ticked.size()));
  controls_.importProgress->show();
  int done = 0;
  for (const int row : ticked) {
    const FoundHost& host = rows_.At(row);
    if (servers.Add(host.machine.name, host.address)) {
      added_ = true;
      rows_.MarkAdded(row);
    }
    controls_.importProgress->setValue(++done);
    controls_.importState->setText(QStringLiteral("%1 of %2 servers done.").arg(done).arg(ticked.size()));
    QCoreApplication::processEvents();
    if (import_ == Import::Stopping) return false;
  }
  return true;
}

}  // namespace quarl::netscan
