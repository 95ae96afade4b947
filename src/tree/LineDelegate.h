#pragma once

#include <QStyledItemDelegate>

namespace quarl::tree {

/// Draws the text of a node or cell as one line, so that rows have one height whatever the text, and a very long one
/// costs no more than a row can show.
class LineDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;
  QString displayText(const QVariant& value, const QLocale& locale) const override;
};

}  // namespace quarl::tree
