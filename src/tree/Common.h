#pragma once

#include <functional>

#include "base/StringTable.h"
#include "store/Stores.h"
#include "tree/ObjectTree.h"

namespace quarl::tree {

/// What several commands share. User-interface thread only.
class Common {
 public:
  struct Messages {
    std::function<void(Text id)> failure;            ///< critical icon, no title
    std::function<void(const QString& text)> error;  ///< an unexpected error's description
  };

  Common(store::Stores& stores, ObjectTree& tree, Messages messages);

  /// Creates a test of the type on the server, in the store and in the tree (in the server's tests folder, which is
  /// made when it is the first one), and makes its node visible. A refusal shows "Add test failed!", an error its
  /// description; what was done before stays done. Never throws Error.
  void AddTestToServer(qint32 idServer, qint32 idTestType);

 private:
  void AddTest(qint32 idServer, qint32 idTestType);

  store::Stores& stores_;
  ObjectTree& tree_;
  Messages messages_;
};

}  // namespace quarl::tree
