#pragma once

#include <span>
#include <vector>

#include "store/TreeReader.h"

namespace quarl::tree {

/// Finds the rows of one owner in rows ordered by owner. The rows must outlive it.
class OwnerIndex {
 public:
  explicit OwnerIndex(const std::vector<store::TreeRow>& rows);
  std::span<const store::TreeRow> Of(qint32 owner) const;

 private:
  const std::vector<store::TreeRow>& rows_;
  // The first row of each owner from the lowest to the highest, or of the next one that has rows; empty when the
  // owners are spread so thinly that it would be large.
  std::vector<quint32> first_;
};

}  // namespace quarl::tree
