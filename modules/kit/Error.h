#pragma once

#include <stdexcept>

namespace quarl::kit {

/// What a module cannot do, as one sentence for the user.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace quarl::kit
