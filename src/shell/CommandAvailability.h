#pragma once

#include <QString>

namespace quarl::shell {

struct MainControls;

/// Which commands of the main window can be used for a node, by the node's kind alone.
class CommandAvailability {
 public:
  explicit CommandAvailability(const MainControls& controls) : controls_(controls) {}
  /// Disables every command that depends on the selection and enables those of the key's kind. The empty key and
  /// folders enable none.
  void Apply(const QString& key) const;

 private:
  const MainControls& controls_;
};

}  // namespace quarl::shell
