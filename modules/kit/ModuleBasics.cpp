#include "kit/ModuleBasics.h"

#include <exception>

namespace quarl::kit {

int16_t ShowAbout(const std::string& text) noexcept {
  try {
    return ShowText("About", text);
  } catch (const std::exception&) {
    return -1;
  }
}

}  // namespace quarl::kit
