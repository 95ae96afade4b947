#include "editors/SchedulePanel.h"

#include <QApplication>
#include <QEvent>
#include <QGridLayout>
#include <array>
#include <limits>

#include "base/StringTable.h"
#include "editors/NumberText.h"

namespace quarl::editors {
namespace {

constexpr std::array kUnits{Text::UnitMinutes, Text::UnitHours, Text::UnitDays};

void SetGround(QWidget& input, QPalette::ColorRole role, const QBrush& ground) {
  QPalette palette = input.palette();
  if (palette.brush(QPalette::Active, role) == ground && palette.brush(QPalette::Disabled, role) == ground) return;
  palette.setBrush(role, ground);
  input.setPalette(palette);
}

}  // namespace

SchedulePanel::SchedulePanel(const QString& caption, const Clock& clock, QWidget* parent)
    : QGroupBox(caption, parent),
      sEnabled_(new QCheckBox(QStringLiteral("Enable scheduling"), this)),
      StartDateLbl_(new QLabel(QStringLiteral("Start checking:"), this)),
      StartDate_(new QDateEdit(QDateTime::fromMSecsSinceEpoch(clock.NowMs()).date(), this)),
      StartTime_(new QTimeEdit(QTime(0, 0), this)),
      DeltaTimelbl_(new QLabel(QStringLiteral("every:"), this)),
      deltaTime_(new QLineEdit(this)),
      deltaType_(new QComboBox(this)) {
  setObjectName(QStringLiteral("Schedule"));
  NameControls();
  BuildControls();
  connect(sEnabled_, &QCheckBox::toggled, this, [this] { sEnabled_Click(); });
  sEnabled_Click();
}

void SchedulePanel::NameControls() {
  const auto name = [](QWidget* control, const QString& text) {
    control->setObjectName(text);
    control->setAccessibleName(text);
  };
  sEnabled_->setObjectName(QStringLiteral("sEnabled"));
  StartDateLbl_->setObjectName(QStringLiteral("StartDateLbl"));
  name(StartDate_, QStringLiteral("StartDate"));
  name(StartTime_, QStringLiteral("StartTime"));
  DeltaTimelbl_->setObjectName(QStringLiteral("DeltaTimelbl"));
  name(deltaTime_, QStringLiteral("deltaTime"));
  name(deltaType_, QStringLiteral("deltaType"));
}

void SchedulePanel::BuildControls() {
  StartDate_->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
  StartDate_->setCalendarPopup(true);
  StartTime_->setDisplayFormat(QStringLiteral("HH:mm:ss"));
  deltaTime_->setMaxLength(std::numeric_limits<int>::max());
  for (const Text unit : kUnits) deltaType_->addItem(LoadText(unit));
  deltaType_->setCurrentIndex(-1);

  auto* grid = new QGridLayout(this);
  grid->addWidget(sEnabled_, 0, 0, 1, 3);
  grid->addWidget(StartDateLbl_, 1, 0);
  grid->addWidget(StartDate_, 1, 1);
  grid->addWidget(StartTime_, 1, 2);
  grid->addWidget(DeltaTimelbl_, 2, 0);
  grid->addWidget(deltaTime_, 2, 1);
  grid->addWidget(deltaType_, 2, 2);
  grid->setColumnStretch(1, 1);
  grid->setColumnStretch(2, 1);
}

void SchedulePanel::Fill(const ScheduleRecord& schedule) {
  sEnabled_->setChecked(schedule.enabled);
  StartDate_->setDate(schedule.startDate);
  StartTime_->setTime(schedule.startTime);
  deltaTime_->setText(QString::number(schedule.deltaTime));
  deltaType_->setCurrentIndex(schedule.deltaType - 1);
  sEnabled_Click();
}

ScheduleRecord SchedulePanel::Read() const {
  ScheduleRecord schedule;
  schedule.enabled = sEnabled_->isChecked();
  schedule.startDate = StartDate_->date();
  schedule.startTime = StartTime_->time();
  schedule.deltaTime = LeadingNumber(deltaTime_->text());
  schedule.deltaType = static_cast<qint16>(deltaType_->currentIndex() + 1);
  return schedule;
}

void SchedulePanel::sEnabled_Click() {
  const bool on = sEnabled_->isChecked();
  const std::array<QWidget*, 6> inputs{StartDate_, StartDateLbl_, StartTime_, deltaTime_, DeltaTimelbl_, deltaType_};
  for (QWidget* input : inputs) input->setEnabled(on);
  ShowAvailability();
}

void SchedulePanel::ShowAvailability() {
  const QPalette::ColorRole role = sEnabled_->isChecked() ? QPalette::Base : QPalette::Button;
  const QBrush ground = palette().brush(QPalette::Active, role);
  SetGround(*deltaTime_, QPalette::Base, ground);
  SetGround(*deltaType_, QPalette::Base, ground);
  SetGround(*deltaType_, QPalette::Button, ground);
}

void SchedulePanel::changeEvent(QEvent* event) {
  QGroupBox::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) ShowAvailability();
}

}  // namespace quarl::editors
