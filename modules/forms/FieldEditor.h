#pragma once

#include <QWidget>
#include <functional>

#include "kit/Form.h"

namespace quarl::forms {

/// The widget in which one field is edited.
struct FieldEditor {
  QWidget* widget;                   ///< owned by its parent
  std::function<kit::Json()> value;  ///< what stands on the screen; the value of before where nothing was edited
};

/// Makes the widget for a field. It carries the key as object name and the label and help for screen readers.
/// @param changed called after each change by the user
FieldEditor MakeFieldEditor(const kit::Field& field, const kit::Json& value, const std::function<void()>& changed,
                            QWidget* parent);

/// A text of a module for widgets that would take a "&" for a shortcut.
QString WithoutShortcut(const std::string& text);
/// A text of a module as tool tip: plain, wrapped.
QString ToolTip(const std::string& text);

}  // namespace quarl::forms
