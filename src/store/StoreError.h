#pragma once

#include "base/Error.h"

namespace quarl::store {

/// The store cannot be reached, is broken, or was asked something that it has no answer for (an unknown field).
/// A refusal (a type still in use, a record that is not there) is a return value, never a StoreError.
class StoreError : public Error {
 public:
  using Error::Error;
};

}  // namespace quarl::store
