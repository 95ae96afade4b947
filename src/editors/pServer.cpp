#include "editors/pServer.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <tuple>

#include "base/NodeKey.h"
#include "editors/DialogParts.h"
#include "editors/NumberText.h"
#include "ui/BusyPointer.h"
#include "ui/PictureIcon.h"

namespace quarl::editors {

pServer::pServer(const EditorContext& context)
    : QDialog(context.window),
      context_(context),
      boxes_(this),
      trap_(QStringLiteral("pServer"), boxes_),
      serverName_(MakeTextBox(QStringLiteral("serverName"), this)),
      ServerIP_(new ui::AddressInput(this)),
      TestIP_(new QPushButton(ui::PictureIcon(QStringLiteral("bCHECK_SERVER")), QString(), this)),
      NFailUpDown_(new ThresholdInput(this)),
      schedule_(new SchedulePanel(QStringLiteral("Override parent schedule"), context.clock, this)) {
  setObjectName(QStringLiteral("pServer"));
  setWindowTitle(QStringLiteral("Server properties"));
  const DialogButtons buttons(*this);
  auto* column = new QVBoxLayout(this);
  column->addWidget(BuildComputer());
  column->addWidget(BuildOptions());
  column->addWidget(schedule_);
  column->addStretch();
  column->addLayout(buttons.row);
  connect(TestIP_, &QPushButton::clicked, this, [this] { TestIP_Click(); });
  connect(buttons.OKButton, &QPushButton::clicked, this, [this] { OKButton_Click(); });
  connect(buttons.CancelButton, &QPushButton::clicked, this, [this] { CancelButton_Click(); });
}

QWidget* pServer::BuildComputer() {
  ServerIP_->setObjectName(QStringLiteral("ServerIP"));
  ServerIP_->setAccessibleName(QStringLiteral("ServerIP"));
  TestIP_->setObjectName(QStringLiteral("TestIP"));
  TestIP_->setAccessibleName(QStringLiteral("TestIP"));
  TestIP_->setToolTip(QStringLiteral("Ping this address"));
  TestIP_->setAutoDefault(false);
  auto* frame = new QGroupBox(QStringLiteral("Computer"), this);
  frame->setObjectName(QStringLiteral("Frame1"));
  auto* address = new QHBoxLayout;
  address->addWidget(ServerIP_);
  address->addWidget(TestIP_);
  address->addStretch();
  auto* form = new QFormLayout(frame);
  form->addRow(MakeLabel(QStringLiteral("lblLabel1"), QStringLiteral("Server name:"), serverName_, frame), serverName_);
  form->addRow(MakeLabel(QStringLiteral("Label1"), QStringLiteral("Server IP:"), ServerIP_, frame), address);
  setTabOrder(serverName_, ServerIP_);
  setTabOrder(ServerIP_, TestIP_);
  return frame;
}

QWidget* pServer::BuildOptions() {
  NFailUpDown_->SetText(QString::number(store::kDefaultFailThreshold));
  auto* frame = new QGroupBox(QStringLiteral("Options"), this);
  frame->setObjectName(QStringLiteral("Frame2"));
  auto* row = new QHBoxLayout(frame);
  row->addWidget(
      MakeLabel(QStringLiteral("Label2"), QStringLiteral("Server is failed if a test fail"), NFailUpDown_, frame));
  row->addWidget(NFailUpDown_);
  row->addWidget(MakeLabel(QStringLiteral("Label3"), QStringLiteral("time(s)"), NFailUpDown_, frame));
  row->addStretch();
  return frame;
}

bool pServer::LoadServer(qint32 id) {
  id_ = id;
  usable_ = false;
  // The dialog is not shown yet, so its boxes stand over its owner.
  const ui::ErrorTrap trap(QStringLiteral("pServer"), ui::MessageBoxes(context_.window));
  return trap("LoadServer", [&] { return id_ == kNew ? LoadNew() : LoadRecord(); });
}

bool pServer::LoadNew() {
  idGroup_ = IdBehind(NodeKind::Group, context_.selection.SelectedKey());
  usable_ = true;
  return true;
}

bool pServer::LoadRecord() {
  store::ServerStore& servers = context_.stores.Servers();
  const auto server = servers.GetServer(id_);
  if (!server) {
    usable_ = true;
    return false;
  }
  const auto schedule = servers.GetServerSchedule(id_);
  const qint16 threshold = servers.GetFailThreshold(id_);
  idGroup_ = server->idGroup;
  serverName_->setText(server->name);
  if (schedule) schedule_->Fill(*schedule);
  NFailUpDown_->SetText(QString::number(threshold));
  usable_ = true;
  // Last, because it may end the loading: OK must not write over a schedule that was never shown.
  ServerIP_->SetText(server->ipAddress);
  return schedule.has_value();
}

void pServer::TestIP_Click() {
  trap_("TestIP_Click", [&] {
    const bool reached = [&] {
      const ui::BusyPointer busy(this);
      return context_.ping(ServerIP_->Text());
    }();
    if (reached) {
      boxes_.Info(Text::PingSucceeded);
    } else {
      boxes_.Warning(Text::PingFailed);
    }
  });
}

void pServer::OKButton_Click() {
  trap_("OKButton_Click", [&] {
    if (id_ == kNew) {
      Add();
    } else {
      Update();
    }
  });
  accept();
}

void pServer::Update() {
  store::ServerStore& servers = context_.stores.Servers();
  if (!servers.UpdateServer(id_, serverName_->text(), ServerIP_->Text(), idGroup_)) {
    boxes_.Stop(Text::UpdateServerFailed, ui::MessageBoxes::Title::Application);
    return;
  }
  context_.tree.Nodes().SetText(NodeKey::Make(NodeKind::Server, id_), serverName_->text());
  std::ignore = servers.SetServerSchedule(id_, schedule_->Read());
  std::ignore = servers.SetFailThreshold(id_, WholeNumber(NFailUpDown_->Text()));
}

void pServer::Add() {
  store::ServerStore& servers = context_.stores.Servers();
  id_ = servers.AddServer(serverName_->text(), ServerIP_->Text(), idGroup_);
  if (id_ < 1) {
    boxes_.Stop(Text::AddServerFailed, ui::MessageBoxes::Title::Application);
    return;
  }
  // Before schedule and threshold, whose texts may be refused: the store has the server from now on, and so must the
  // tree.
  context_.tree.Nodes().InsertSorted(NodeKey::Make(NodeKind::Group, idGroup_), NodeKey::Make(NodeKind::Server, id_),
                                     serverName_->text(), QStringLiteral("iSERVER"));
  if (schedule_->IsOn()) std::ignore = servers.SetServerSchedule(id_, schedule_->Read());
  std::ignore = servers.SetFailThreshold(id_, WholeNumber(NFailUpDown_->Text()));
}

}  // namespace quarl::editors
