#pragma once

#include <string>

#include "kit/Form.h"

namespace quarl::kit {

/// The JSON by which the host shows a form (docs/forms.md).
/// @param note shown above the fields, "" for none
/// @param tryLabel caption of the button that tries the values, "" for none
std::string FormText(const Form& form, const std::string& note, const std::string& tryLabel);

}  // namespace quarl::kit
