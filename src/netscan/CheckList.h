#pragma once

#include <QTreeWidget>
#include <vector>

namespace quarl::netscan {

/// A list whose rows have a check box each. Space ticks or unticks the current row; Ctrl+A ticks every row that takes
/// part in it, or unticks all when those are ticked already.
class CheckList : public QTreeWidget {
 public:
  explicit CheckList(QWidget* parent = nullptr);

  /// Adds an unticked row. Its texts are shown on one line each, long ones shortened.
  QTreeWidgetItem* AddRow(const QStringList& texts);
  /// Takes the row out of Ctrl+A and shows it grey and in italics. The user may still tick it.
  void SetAside(QTreeWidgetItem& row);
  /// The places of the ticked rows, from the top.
  std::vector<int> Ticked() const;
  void Untick(int row) { topLevelItem(row)->setCheckState(0, Qt::Unchecked); }
  /// Makes the columns as wide as their contents, within reason, and the first row the current one.
  void FitContents();

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void TickAll();
};

/// A tool tip of these lines as they are: nothing in them is taken for formatting.
QString PlainToolTip(const QStringList& lines);

}  // namespace quarl::netscan
