#include "netscan/ServerRows.h"

#include <QSignalBlocker>

namespace quarl::netscan {
namespace {

QString Counted(qsizetype count, const QString& one, const QString& several) {
  return QStringLiteral("%1 %2").arg(count).arg(count == 1 ? one : several);
}

QString Machines(qsizetype count) {
  return Counted(count, QStringLiteral("machine"), QStringLiteral("machines"));
}

/// Why a machine that was seen has no row; empty for one that has.
QString ReasonOf(const FoundHost& host, quint32 filter) {
  if (host.unlisted != Unlisted::No) return host.Reason();
  if ((host.label.systemClass & filter) != 0) return {};
  return QStringLiteral("%1 (%2) has an operating system that was not selected: %3.")
      .arg(host.machine.name, host.address, host.label.text);
}

void SetToolTip(QTreeWidgetItem& row, const QString& toolTip) {
  for (int column = 0; column < row.columnCount(); ++column) row.setToolTip(column, toolTip);
}

}  // namespace

ServerRows::ServerRows(const WizardControls& controls) : controls_(controls) {
  QObject::connect(controls_.SERVERList, &QTreeWidget::itemChanged, controls_.SERVERList, [this] { ShowCount(); });
}

void ServerRows::Clear() {
  hosts_.clear();
  complete_ = true;
  CheckList& list = *controls_.SERVERList;
  list.clear();
  list.setHeaderLabels({QStringLiteral("Server"), QStringLiteral("Operating System"), QStringLiteral("IP Address")});
  list.FitContents();
  controls_.notListed->setChecked(false);
  controls_.notListed->hide();
  controls_.notListedText->hide();
  controls_.scanState->clear();
  controls_.scanProgress->hide();
  controls_.scanStop->hide();
}

void ServerRows::ShowProgress(const ScanProgress& progress) {
  QProgressBar& bar = *controls_.scanProgress;
  bar.setRange(0, progress.addresses + progress.sources);
  bar.setValue(progress.addressesProbed + progress.sourcesDone);
  bar.show();
  controls_.scanStop->show();
  QString text = QStringLiteral("Looking for machines: ");
  if (progress.addresses > 0) {
    text += QStringLiteral("%1 of %2 asked, ")
                .arg(progress.addressesProbed)
                .arg(Counted(progress.addresses, QStringLiteral("address"), QStringLiteral("addresses")));
  }
  controls_.scanState->setText(text + QStringLiteral("%1 seen.").arg(Machines(progress.hosts)));
}

void ServerRows::ShowResult(const ScanResult& result, quint32 filter, const KnownServers& known) {
  hosts_ = ListedHosts(result, filter);
  complete_ = result.complete;
  {
    const QSignalBlocker quiet(controls_.SERVERList);
    for (const FoundHost& host : hosts_) AddRow(host, known.NoteOn(host));
  }
  controls_.SERVERList->FitContents();
  controls_.SERVERList->viewport()->update();
  controls_.scanProgress->hide();
  controls_.scanStop->hide();
  ShowNotListed(result, filter);
  ShowCount();
}

void ServerRows::AddRow(const FoundHost& host, const QString& known) {
  QTreeWidgetItem* row = controls_.SERVERList->AddRow({host.machine.name, host.label.text, host.address});
  SetToolTip(*row, PlainToolTip({known, host.finding}));
  if (!known.isEmpty()) controls_.SERVERList->SetAside(*row);
}

void ServerRows::MarkAdded(int row) {
  CheckList& list = *controls_.SERVERList;
  list.Untick(row);
  list.SetAside(*list.topLevelItem(row));
  SetToolTip(*list.topLevelItem(row), PlainToolTip({QStringLiteral("Added by this wizard."), At(row).finding}));
}

void ServerRows::ShowNotListed(const ScanResult& result, quint32 filter) {
  QStringList lines;
  for (const FoundHost& host : result.hosts)
    if (const QString reason = ReasonOf(host, filter); !reason.isEmpty()) lines += reason;
  const qsizetype machines = lines.size();
  lines += result.notes;
  if (lines.isEmpty()) return;
  controls_.notListed->setText(QStringLiteral("Not listed (%1)").arg(machines));
  controls_.notListedText->setPlainText(lines.join(QLatin1Char('\n')));
  controls_.notListed->show();
}

void ServerRows::ShowCount() {
  const auto ticked = controls_.SERVERList->Ticked().size();
  QString text =
      hosts_.empty()
          ? QStringLiteral("No machine was found that can be listed.")
          : QStringLiteral("%1 listed, %2 ticked.").arg(Machines(static_cast<qsizetype>(hosts_.size()))).arg(ticked);
  if (!complete_) text += QStringLiteral(" The search ended early.");
  controls_.scanState->setText(text);
}

}  // namespace quarl::netscan
