#pragma once

#include <QCheckBox>
#include <QDialog>
#include <QFrame>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QToolButton>

#include "netscan/CheckList.h"

namespace quarl::netscan {

/// The controls of the wizard under their names, which are their object names as well; the window owns them.
struct WizardControls {
  enum Page { kWelcome, kSystems, kServers, kTests, kImport, kPageCount };

  /// Builds everything into the window.
  explicit WizardControls(QDialog& window);

  QLabel* wizardLogo = nullptr;
  QStackedWidget* pages = nullptr;  ///< holds the frames WizardFrame_0 to WizardFrame_4
  QPushButton* Indietro = nullptr;
  QPushButton* Avanti = nullptr;
  QPushButton* Annulla = nullptr;
  QCheckBox* OS1 = nullptr;
  QCheckBox* OS2 = nullptr;
  QCheckBox* OS3 = nullptr;
  CheckList* SERVERList = nullptr;
  QLabel* scanState = nullptr;
  QProgressBar* scanProgress = nullptr;
  QPushButton* scanStop = nullptr;
  QToolButton* notListed = nullptr;
  QPlainTextEdit* notListedText = nullptr;
  CheckList* TESTList = nullptr;
  QLabel* importState = nullptr;
  QProgressBar* importProgress = nullptr;

 private:
  void BuildPages();
  void BuildSystems(QFrame& page);
  void BuildServers(QFrame& page);
  void BuildTests(QFrame& page);
  void BuildImport(QFrame& page);
  QFrame* BuildBottomBar(QDialog& window);
};

}  // namespace quarl::netscan
