#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QTimeEdit>

#include "base/Clock.h"
#include "base/ScheduleRecord.h"

namespace quarl::editors {

/// The frame "Schedule": whether a group or server has a schedule of its own, from when on and how often. Everything
/// but the check box can be used while the box is ticked. It begins unticked, without unit, on the day of its making.
/// Dates and times are shown the same way in every locale. User-interface thread only.
class SchedulePanel : public QGroupBox {
 public:
  SchedulePanel(const QString& caption, const Clock& clock, QWidget* parent = nullptr);

  /// A unit that the list does not have leaves none chosen; a date or time that is none leaves what was there.
  void Fill(const ScheduleRecord& schedule);
  /// Whether the box is ticked.
  bool IsOn() const { return sEnabled_->isChecked(); }
  /// The interval is the number at the beginning of its text. Throws Error "Overflow" when it has no place in 16 bits.
  ScheduleRecord Read() const;

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void BuildControls();
  void NameControls();
  void sEnabled_Click();
  void ShowAvailability();

  QCheckBox* sEnabled_;
  QLabel* StartDateLbl_;
  QDateEdit* StartDate_;
  QTimeEdit* StartTime_;
  QLabel* DeltaTimelbl_;
  QLineEdit* deltaTime_;
  QComboBox* deltaType_;
};

}  // namespace quarl::editors
