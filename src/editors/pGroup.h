#pragma once

#include <QDialog>
#include <QGroupBox>
#include <QLineEdit>
#include <optional>

#include "editors/EditorContext.h"
#include "editors/SchedulePanel.h"
#include "ui/ErrorTrap.h"

namespace quarl::editors {

/// The dialog "Group properties": name, description and schedule of a new group, of an existing one, or the default
/// schedule (the root group). OK writes to the store, brings the tree up to date and always closes; Cancel only
/// closes. To be initialised once with LoadGroup, then shown with exec(). User-interface thread only.
class pGroup : public QDialog {
 public:
  static constexpr qint32 kNew = -1;
  static constexpr qint32 kRoot = 0;

  explicit pGroup(const EditorContext& context);

  /// @param id kNew, kRoot or an existing group.
  /// @return true when a group was read: false for a new one, for one that is not there and after an error, which the
  ///         user has seen then.
  bool LoadGroup(qint32 id);

 private:
  void BuildControls();
  void OKButton_Click();
  void CancelButton_Click() { reject(); }

  bool LoadRecord();
  bool LoadRoot();
  void FillSchedule(const std::optional<ScheduleRecord>& schedule);
  void Update();
  void UpdateRoot();
  void Add();

  EditorContext context_;
  ui::MessageBoxes boxes_;
  ui::ErrorTrap trap_;
  qint32 id_ = kNew;
  QGroupBox* fraFrame1_;
  QLineEdit* groupName_;
  QLineEdit* groupDescription_;
  SchedulePanel* schedule_;
};

}  // namespace quarl::editors
