#pragma once

#include <string>
#include <string_view>

#include "kit/Form.h"

namespace quarl::forms {

/// What a module asks to show; checked, so that everything in it can be shown.
struct FormRequest {
  kit::Form form;  ///< without a module's name; labels are single lines
  std::string note;
  std::string tryLabel;
  kit::Json values;  ///< exactly one member for each field, that may stand there or is empty
};

/// Reads the description of a form and its values (docs/forms.md). Throws kit::Error, with a sentence for the log, when
/// they do not describe a form that can be shown.
FormRequest ReadForm(std::string_view description, std::string_view values);

}  // namespace quarl::forms
