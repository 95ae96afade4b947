#pragma once

#include <QDialog>

namespace quarl::forms {

/// A text with a title and an OK button, "ModuleText".
class TextDialog : public QDialog {
 public:
  TextDialog(const QString& title, const QString& text, QWidget* parent = nullptr);
};

}  // namespace quarl::forms
