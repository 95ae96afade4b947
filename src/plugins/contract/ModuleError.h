#pragma once

#include "base/Error.h"

namespace quarl::plugins {

/// A module file that cannot be read; the description is one sentence that does not name the file.
class ModuleError : public Error {
 public:
  using Error::Error;
};

}  // namespace quarl::plugins
