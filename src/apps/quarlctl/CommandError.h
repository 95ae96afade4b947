#pragma once

#include "base/Error.h"

namespace quarl::ctl {

/// A command cannot do what it was asked for; nothing has changed.
class CommandError : public Error {
 public:
  using Error::Error;
};

}  // namespace quarl::ctl
