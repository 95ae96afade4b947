#pragma once

#include "store/StoreError.h"

namespace quarl::store::sql {

/// What went wrong, as far as the code has to tell it apart.
enum class Fault {
  Busy,         ///< another program holds the store
  Damaged,      ///< the file is no whole store
  Unreachable,  ///< missing, not permitted, read-only, input or output error
  Foreign,      ///< whole, but not for this program: another program's, or of a newer version
  Other,
};

class SqlError : public StoreError {
 public:
  SqlError(Fault fault, const QString& description) : StoreError(description), fault_(fault) {}
  Fault What() const noexcept { return fault_; }
  /// The connection is of no use any more and has to be opened anew.
  bool LosesConnection() const noexcept { return fault_ == Fault::Damaged || fault_ == Fault::Unreachable; }

 private:
  Fault fault_;
};

}  // namespace quarl::store::sql
