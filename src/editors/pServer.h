#pragma once

#include <QDialog>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>

#include "editors/EditorContext.h"
#include "editors/SchedulePanel.h"
#include "editors/ThresholdInput.h"
#include "ui/AddressInput.h"
#include "ui/ErrorTrap.h"

namespace quarl::editors {

/// The dialog "Server properties": name, address, failure threshold and schedule of a new or an existing server. OK
/// writes to the store, brings the tree up to date and always closes; Cancel only closes. To be initialised once with
/// LoadServer, then shown with exec(). User-interface thread only.
class pServer : public QDialog {
 public:
  static constexpr qint32 kNew = -1;

  explicit pServer(const EditorContext& context);

  /// @param id kNew, for a server of the group whose key is selected, or an existing server.
  /// @return true for a new server, and for an existing one that was found with a schedule of its own. False after an
  ///         error, which the user has seen then.
  bool LoadServer(qint32 id);
  /// False when an error left open what the server is or where a new one belongs, so that OK would write over what was
  /// never shown. An address that cannot be shown is no such error: everything else has been loaded then.
  bool IsUsable() const { return usable_; }

 private:
  QWidget* BuildComputer();
  QWidget* BuildOptions();
  void TestIP_Click();
  void OKButton_Click();
  void CancelButton_Click() { reject(); }

  bool LoadNew();
  bool LoadRecord();
  void Update();
  void Add();

  EditorContext context_;
  ui::MessageBoxes boxes_;
  ui::ErrorTrap trap_;
  qint32 id_ = kNew;
  qint32 idGroup_ = 0;
  bool usable_ = false;
  QLineEdit* serverName_;
  ui::AddressInput* ServerIP_;
  QPushButton* TestIP_;
  ThresholdInput* NFailUpDown_;
  SchedulePanel* schedule_;
};

}  // namespace quarl::editors
