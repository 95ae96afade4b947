#pragma once

#include <vector>

#include "netscan/KnownServers.h"
#include "netscan/WizardControls.h"
#include "netscan/api/FoundHost.h"

namespace quarl::netscan {

/// Page 2 of the wizard: the machines that a search has found, its progress, and what is not listed.
class ServerRows {
 public:
  explicit ServerRows(const WizardControls& controls);

  /// Empties the page, for a new search.
  void Clear();
  void ShowProgress(const ScanProgress& progress);
  /// Lists what was found and belongs to the filter. @param known machines that are there already are marked by it.
  void ShowResult(const ScanResult& result, quint32 filter, const KnownServers& known);
  /// The machine of a row.
  const FoundHost& At(int row) const { return hosts_[static_cast<std::size_t>(row)]; }
  /// Unticks a row and marks it as one whose machine is in the store now.
  void MarkAdded(int row);
  void ShowCount();

 private:
  void AddRow(const FoundHost& host, const QString& known);
  void ShowNotListed(const ScanResult& result, quint32 filter);

  const WizardControls& controls_;
  std::vector<FoundHost> hosts_;  ///< of the rows
  bool complete_ = true;
};

}  // namespace quarl::netscan
