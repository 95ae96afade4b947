#pragma once

#include <QDialog>

#include "netscan/ScanRunner.h"
#include "netscan/ServerRows.h"
#include "netscan/WizardContext.h"
#include "netscan/WizardControls.h"
#include "ui/ErrorTrap.h"

namespace quarl::netscan {

/// The wizard "Scan Network": finds the machines of the local network and adds those that the user ticks, with the
/// tests that he ticks, to the group that is selected in the tree. Searching and importing leave the windows alive;
/// both can be stopped. Modal, user-interface thread only.
class ScanWizard : public QDialog {
 public:
  explicit ScanWizard(const WizardContext& context);
  /// Shows the wizard until it is closed; the list then shows what was added. Unexpected errors have been shown then.
  void Run();

  void reject() override;

 private:
  enum class Import { No, Running, Stopping };

  bool Form_Load();
  void ShowTests();
  void ScanNetwork();
  void Avanti_Click();
  void Indietro_Click();
  void Annulla_Click();
  void OS1_Click();
  void OS2_Click();
  void OS3_Click();

  void ConnectControls();
  void LoadLogo();
  void AddTestType(qint32 id, const QString& name, const QString& module);
  int Page() const { return controls_.pages->currentIndex(); }
  void ShowPage(int page);
  /// Sets what the buttons say and which of them can be used.
  void UpdateButtons();
  quint32 Filter() const;
  void ShowFound(const ScanResult& result);
  void ShowPlan();
  std::vector<qint32> TickedTestTypes() const;
  void LoadTestImages();
  /// True when every ticked server was gone through.
  bool ImportTicked();

  WizardContext context_;
  ui::MessageBoxes boxes_;
  ui::ErrorTrap trap_;
  WizardControls controls_;
  ServerRows rows_;
  ui::ImageList TESTImageList_;
  KnownServers known_;
  qint32 idGroup_ = 0;
  Import import_ = Import::No;
  bool added_ = false;
  ScanRunner runner_;
};

}  // namespace quarl::netscan
