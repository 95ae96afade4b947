#include "tree/OwnerIndex.h"

#include <algorithm>

namespace quarl::tree {

OwnerIndex::OwnerIndex(const std::vector<store::TreeRow>& rows) : rows_(rows) {
  if (rows.empty()) return;
  const qint64 owners = qint64{rows.back().owner} - rows.front().owner + 1;
  if (owners < 1 || owners > static_cast<qint64>(rows.size()) * 4 + 1024) return;
  first_.reserve(static_cast<std::size_t>(owners) + 1);
  for (std::size_t row = 0; row < rows.size(); ++row) {
    const qint64 place = qint64{rows[row].owner} - rows.front().owner;
    while (static_cast<qint64>(first_.size()) <= place) first_.push_back(static_cast<quint32>(row));
  }
  first_.push_back(static_cast<quint32>(rows.size()));
}

std::span<const store::TreeRow> OwnerIndex::Of(qint32 owner) const {
  if (first_.empty()) {
    const auto [first, last] =
        std::equal_range(rows_.begin(), rows_.end(), store::TreeRow{.owner = owner},
                         [](const store::TreeRow& a, const store::TreeRow& b) { return a.owner < b.owner; });
    return {first, last};
  }
  const qint64 place = qint64{owner} - rows_.front().owner;
  if (place < 0 || place + 1 >= static_cast<qint64>(first_.size())) return {};
  const auto at = static_cast<std::size_t>(place);
  return std::span(rows_).subspan(first_[at], first_[at + 1] - first_[at]);
}

}  // namespace quarl::tree
