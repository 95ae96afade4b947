#include "netscan/CheckList.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QSignalBlocker>

#include "ui/OneLine.h"

namespace quarl::netscan {
namespace {

constexpr int kStaysOutRole = Qt::UserRole;
constexpr int kLongestText = 200;  // characters
constexpr int kWidestColumn = 48;  // average characters
constexpr int kColumnGap = 3;      // average characters

Qt::CheckState Opposite(Qt::CheckState state) {
  return state == Qt::Checked ? Qt::Unchecked : Qt::Checked;
}

}  // namespace

CheckList::CheckList(QWidget* parent) : QTreeWidget(parent) {
  setRootIsDecorated(false);
  setItemsExpandable(false);
  setUniformRowHeights(true);
  setAllColumnsShowFocus(true);
  header()->setStretchLastSection(false);
}

QTreeWidgetItem* CheckList::AddRow(const QStringList& texts) {
  auto* row = new QTreeWidgetItem;
  for (int column = 0; column < texts.size(); ++column) row->setText(column, ui::OneLine(texts[column], kLongestText));
  row->setCheckState(0, Qt::Unchecked);
  addTopLevelItem(row);
  return row;
}

void CheckList::SetAside(QTreeWidgetItem& row) {
  row.setData(0, kStaysOutRole, true);
  QFont italic = font();
  italic.setItalic(true);
  for (int column = 0; column < columnCount(); ++column) {
    row.setFont(column, italic);
    row.setForeground(column, palette().brush(QPalette::PlaceholderText));
  }
}

std::vector<int> CheckList::Ticked() const {
  std::vector<int> places;
  for (int row = 0; row < topLevelItemCount(); ++row)
    if (topLevelItem(row)->checkState(0) == Qt::Checked) places.push_back(row);
  return places;
}

void CheckList::FitContents() {
  const int character = fontMetrics().averageCharWidth();
  header()->setSectionResizeMode(columnCount() - 1, QHeaderView::Stretch);
  for (int column = 0; column + 1 < columnCount(); ++column) {
    resizeColumnToContents(column);
    setColumnWidth(column, qMin(columnWidth(column) + kColumnGap * character, kWidestColumn * character));
  }
  if (topLevelItemCount() > 0) setCurrentItem(topLevelItem(0));
}

void CheckList::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::SelectAll)) {
    TickAll();
  } else if (event->key() == Qt::Key_Space && event->modifiers() == Qt::NoModifier && currentItem() != nullptr) {
    currentItem()->setCheckState(0, Opposite(currentItem()->checkState(0)));
  } else {
    QTreeWidget::keyPressEvent(event);
  }
}

// Whoever listens hears of it once, since he may look at every row.
void CheckList::TickAll() {
  std::vector<QTreeWidgetItem*> taking;
  bool allTicked = true;
  for (int row = 0; row < topLevelItemCount(); ++row) {
    QTreeWidgetItem* item = topLevelItem(row);
    if (item->data(0, kStaysOutRole).toBool()) continue;
    taking.push_back(item);
    allTicked = allTicked && item->checkState(0) == Qt::Checked;
  }
  {
    const QSignalBlocker quiet(this);
    if (allTicked) {
      for (const int row : Ticked()) Untick(row);
    } else {
      for (QTreeWidgetItem* item : taking) item->setCheckState(0, Qt::Checked);
    }
  }
  viewport()->update();
  if (topLevelItemCount() > 0) Q_EMIT itemChanged(topLevelItem(0), 0);
}

QString PlainToolTip(const QStringList& lines) {
  QStringList escaped;
  for (const QString& line : lines)
    if (!line.isEmpty()) escaped += line.toHtmlEscaped();
  return escaped.isEmpty() ? QString() : QStringLiteral("<qt>%1</qt>").arg(escaped.join(QStringLiteral("<br>")));
}

}  // namespace quarl::netscan
