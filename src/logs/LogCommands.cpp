#include "logs/LogCommands.h"

#include <QFileDialog>
#include <tuple>

#include "base/StringTable.h"

namespace quarl::logs {

LogCommands::LogCommands(store::Stores& stores, const tree::ObjectTree& tree, tree::SelectionPort& selection,
                         QWidget& window)
    : stores_(stores), tree_(tree), selection_(selection), window_(window), boxes_(&window) {}

void LogCommands::Clear() {
  if (!boxes_.Confirm(Text::ConfirmClearLog)) return;
  store::LogStore& log = stores_.Log();
  log.ClearLogs();
  log.AddLog(static_cast<qint16>(store::Severity::Information), LoadText(Text::LogCleared));
  // A log row that was clicked leaves no selected key; the list still shows the tree's selected node then.
  const QString& selected = selection_.SelectedKey();
  const QString key = tree_.Nodes().Contains(selected) ? selected : tree_.SelectedKey();
  if (!key.isEmpty()) selection_.NodeClick(key);
}

QString LogCommands::AskFileName() {
  QFileDialog dialog(&window_, LoadText(Text::SaveLogTitle), QString(), QStringLiteral("Log (*.log)"));
  dialog.setObjectName(QStringLiteral("CommonDialog"));
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

void LogCommands::Save() {
  const QString fileName = AskFileName();
  if (fileName.isEmpty()) return;
  if (!stores_.Log().SaveLog(fileName)) boxes_.Stop(Text::SaveLogFailed, ui::MessageBoxes::Title::Application);
}

}  // namespace quarl::logs
