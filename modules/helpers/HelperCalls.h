#pragma once

#include <exception>
#include <string>

#include "ModuleTable.h"
#include "quarl_helper.h"

namespace quarl::helpers {

/// The modules of this library; defined with the operations that only it has.
ModuleTable& Modules();

/// Why this thread's last operation failed.
std::string& Failure();

/// Runs one operation and keeps what went wrong for HelperFailure(). Nothing is thrown to a caller in C.
template <typename Operation>
int16_t Guarded(const Operation& operation) noexcept {
  try {
    Failure().clear();
    return operation();
  } catch (const HelperError& error) {
    Failure() = error.what();
  } catch (const std::exception& error) {
    Failure() = std::string("The module threw an exception: ") + error.what() + '.';
  } catch (...) {
    Failure() = "The module threw something that is no exception.";
  }
  return QUARL_HELPER_FAILED;
}

}  // namespace quarl::helpers
