#pragma once

#include <optional>
#include <vector>

#include "netscan/WizardContext.h"
#include "tree/Common.h"
#include "ui/MessageBoxes.h"

namespace quarl::netscan {

/// Adds servers with their tests to a group, in the store and in the tree.
class ServerImport {
 public:
  /// @param context must outlive the import.
  ServerImport(const WizardContext& context, ui::MessageBoxes boxes, qint32 idGroup, std::vector<qint32> testTypes);

  /// Adds one server and its tests, in one change of the store. False: the store refused the server, and the user has
  /// been told so; of refused tests he is told afterwards. Throws Error, with store and tree as they were.
  bool Add(const QString& name, const QString& address);

 private:
  bool AddToBoth(const QString& name, const QString& address);

  const WizardContext& context_;
  ui::MessageBoxes boxes_;
  qint32 idGroup_;
  std::vector<qint32> testTypes_;
  std::vector<Text> refusals_;    ///< of tests of the server that is being added
  std::optional<QString> error_;  ///< the first of the server that is being added
  tree::Common common_;
};

}  // namespace quarl::netscan
