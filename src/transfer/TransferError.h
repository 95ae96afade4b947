#pragma once

#include "base/Error.h"

namespace quarl::transfer {

/// A file that is no configuration, or one that cannot be brought into this store. Nothing has changed.
class TransferError : public Error {
 public:
  using Error::Error;
};

}  // namespace quarl::transfer
