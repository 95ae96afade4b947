#pragma once

#include <QString>
#include <QWidget>
#include <functional>

#include "base/Clock.h"
#include "store/Stores.h"
#include "tree/ObjectTree.h"
#include "tree/SelectionPort.h"

namespace quarl::editors {

/// Whether a host answers an echo request. The address is dotted text. May take some time and may throw Error.
using Ping = std::function<bool(const QString& address)>;

/// What the dialogs and commands work on. Everything is borrowed and must outlive them.
struct EditorContext {
  QWidget* window;  ///< the owner of dialogs and message boxes
  store::Stores& stores;
  tree::ObjectTree& tree;
  tree::SelectionPort& selection;
  const Clock& clock;
  Ping ping;
};

/// The id behind a kind's prefix. Throws Error when the key is not one of that kind or holds no 32-bit number.
qint32 IdBehind(NodeKind kind, const QString& key);

}  // namespace quarl::editors
