#pragma once

#include <QGridLayout>
#include <QLabel>

#include "forms/FieldEditor.h"

namespace quarl::forms {

/// One field in a section: its label, its editor, a line of help where it is of use, and a line for what is wrong.
class FieldRow {
 public:
  /// Adds the row below what the layout has; the widgets belong to its widget.
  FieldRow(const kit::Field& field, const kit::Json& value, const std::function<void()>& changed, QGridLayout& layout);

  const kit::Field& Field() const { return *field_; }
  kit::Json Value() const { return editor_.value(); }
  QWidget& Editor() const { return *editor_.widget; }
  /// Label in front of the editor; nullptr for a check box, which has its own.
  QLabel* Label() const { return label_; }

  void SetEnabled(bool enabled);
  /// "" hides the line.
  void ShowError(const QString& text);
  bool HasError() const { return !error_->isHidden(); }

 private:
  void AddHelp(QGridLayout& layout);

  const kit::Field* field_;
  FieldEditor editor_;
  QLabel* label_ = nullptr;
  QLabel* help_ = nullptr;
  QLabel* error_;
};

}  // namespace quarl::forms
