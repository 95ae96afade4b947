#pragma once

#include <QDialog>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>

namespace quarl::editors {

/// The buttons "OKButton" (the default one) and "CancelButton" at the right end of a row.
struct DialogButtons {
  explicit DialogButtons(QDialog& dialog);
  QPushButton* OKButton;
  QPushButton* CancelButton;
  QLayout* row;  ///< without parent until it is added to a layout
};

/// A text field under its control name that takes texts of any length.
QLineEdit* MakeTextBox(const QString& name, QWidget* parent);
/// A label under its control name that stands for a field.
QLabel* MakeLabel(const QString& name, const QString& caption, QWidget* field, QWidget* parent);

}  // namespace quarl::editors
