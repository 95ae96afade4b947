#pragma once

#include "store/Stores.h"
#include "tree/ContentListModel.h"

namespace quarl::tree {

/// Fills the detail list. Each fill drops columns and rows and builds both anew from one query, in the query's order.
/// A fill shows no message of its own; it throws Error. A query that fails leaves the columns; a value that cannot be
/// shown (a Null in a text, a state or severity without image) ends the fill there, leaving the rows before it whole
/// and its own row with what was set until then. User-interface thread only.
class ContentViews {
 public:
  ContentViews(store::Stores& stores, ContentListModel& list);

  void Clear() { list_.Clear(); }
  /// The servers of a group; of 0: every server with the name of its group.
  void ShowServerList(qint32 idGroup);
  void ShowTestList(qint32 idServer);
  void ShowLogList();

 private:
  template <typename Fill>
  void Show(ContentRows rows, Fill fill);

  store::Stores& stores_;
  ContentListModel& list_;
};

}  // namespace quarl::tree
