#include "editors/pGroup.h"

#include <QFormLayout>
#include <QVBoxLayout>
#include <optional>
#include <tuple>

#include "base/NodeKey.h"
#include "editors/DialogParts.h"

namespace quarl::editors {
namespace {

constexpr QStringView kOverrideCaption = u"Override parent schedule";
constexpr QStringView kGroupCaption = u"Group schedule";

}  // namespace

pGroup::pGroup(const EditorContext& context)
    : QDialog(context.window),
      context_(context),
      boxes_(this),
      trap_(QStringLiteral("pGroup"), boxes_),
      fraFrame1_(new QGroupBox(QStringLiteral("Group"), this)),
      groupName_(MakeTextBox(QStringLiteral("groupName"), fraFrame1_)),
      groupDescription_(MakeTextBox(QStringLiteral("groupDescription"), fraFrame1_)),
      schedule_(new SchedulePanel(kGroupCaption.toString(), context.clock, this)) {
  setObjectName(QStringLiteral("pGroup"));
  setWindowTitle(QStringLiteral("Group properties"));
  BuildControls();
}

void pGroup::BuildControls() {
  const QString label = QStringLiteral("lblLabel1");
  fraFrame1_->setObjectName(QStringLiteral("fraFrame1"));
  auto* form = new QFormLayout(fraFrame1_);
  form->addRow(MakeLabel(label, QStringLiteral("Group name:"), groupName_, fraFrame1_), groupName_);
  form->addRow(MakeLabel(label, QStringLiteral("Group description:"), groupDescription_, fraFrame1_),
               groupDescription_);

  const DialogButtons buttons(*this);
  connect(buttons.OKButton, &QPushButton::clicked, this, [this] { OKButton_Click(); });
  connect(buttons.CancelButton, &QPushButton::clicked, this, [this] { CancelButton_Click(); });

  auto* column = new QVBoxLayout(this);
  column->addWidget(fraFrame1_);
  column->addWidget(schedule_);
  column->addStretch();
  column->addLayout(buttons.row);
}

bool pGroup::LoadGroup(qint32 id) {
  id_ = id;
  // The dialog is not shown yet, so its boxes stand over its owner.
  const ui::ErrorTrap trap(QStringLiteral("pGroup"), ui::MessageBoxes(context_.window));
  return trap("LoadGroup", [&] { return id_ == kRoot ? LoadRoot() : LoadRecord(); });
}

bool pGroup::LoadRecord() {
  schedule_->setTitle(kOverrideCaption.toString());
  groupName_->setEnabled(true);
  groupDescription_->setEnabled(true);
  if (id_ == kNew) return false;
  store::GroupStore& groups = context_.stores.Groups();
  const auto group = groups.GetGroup(id_);
  if (!group) return false;
  const auto schedule = groups.GetGroupSchedule(id_);
  groupName_->setText(group->name);
  groupDescription_->setText(group->description);
  FillSchedule(schedule);
  return true;
}

bool pGroup::LoadRoot() {
  groupName_->setText(QStringLiteral("SERVERS"));
  groupDescription_->setText(QStringLiteral("Master group"));
  groupName_->setEnabled(false);
  groupDescription_->setEnabled(false);
  schedule_->setTitle(kGroupCaption.toString());
  FillSchedule(context_.stores.Groups().GetDefaultSchedule());
  return true;
}

void pGroup::FillSchedule(const std::optional<ScheduleRecord>& schedule) {
  if (schedule) schedule_->Fill(*schedule);
}

void pGroup::OKButton_Click() {
  trap_("OKButton_Click", [&] {
    if (id_ == kNew) {
      Add();
    } else if (id_ == kRoot) {
      UpdateRoot();
    } else {
      Update();
    }
  });
  accept();
}

void pGroup::Update() {
  store::GroupStore& groups = context_.stores.Groups();
  if (!groups.UpdateGroup(id_, groupName_->text(), groupDescription_->text())) {
    boxes_.Stop(Text::UpdateGroupFailed, ui::MessageBoxes::Title::Application);
    return;
  }
  context_.tree.Nodes().SetText(NodeKey::Make(NodeKind::Group, id_), groupName_->text());
  std::ignore = groups.SetGroupSchedule(id_, schedule_->Read());
}

void pGroup::UpdateRoot() {
  if (!context_.stores.Groups().SetDefaultSchedule(schedule_->Read())) {
    boxes_.Stop(Text::UpdateGroupFailed, ui::MessageBoxes::Title::Application);
  }
}

void pGroup::Add() {
  store::GroupStore& groups = context_.stores.Groups();
  id_ = groups.AddGroup(groupName_->text(), groupDescription_->text());
  if (id_ < 1) {
    boxes_.Stop(Text::AddGroupFailed, ui::MessageBoxes::Title::Application);
    return;
  }
  // Before the schedule, whose text may be refused: the store has the group from now on, and so must the tree.
  context_.tree.Nodes().InsertSorted(NodeKey::kRoot, NodeKey::Make(NodeKind::Group, id_), groupName_->text(),
                                     QStringLiteral("iSERVERGROUP"));
  if (schedule_->IsOn()) std::ignore = groups.SetGroupSchedule(id_, schedule_->Read());
}

}  // namespace quarl::editors
