#pragma once

#include <functional>
#include <optional>

#include "editors/EditorContext.h"
#include "plugins/contract/ModuleCalls.h"
#include "ui/ErrorTrap.h"

namespace quarl::editors {

/// The commands that hand a test or an alert, the one of the selected key, to the module of its type: its property
/// dialog, and the trial of an alert. What the module returns is stored only when the user confirmed it; a record that
/// is not there any more ends a command silently. None throws Error: an unexpected error is shown with the tag of the
/// main window's procedure, and nothing is stored. User-interface thread only.
class PropertyCommands {
 public:
  /// @param calls borrowed; must outlive the commands, as everything in the context.
  PropertyCommands(EditorContext context, plugins::ModuleCalls& calls);

  void mTestProperties_Click();
  void mAlertProperties_Click();
  void mAlertTest_Click();

 private:
  using TextOf = std::function<std::optional<QString>(qint32 id)>;
  struct Owner {
    QString name;
    QString address;  ///< "" for a group
  };
  /// A test or an alert as its module gets it.
  struct Subject {
    ModuleKind kind = ModuleKind::Test;
    qint32 id = 0;
    QString properties;
    QString module;
    Owner owner;
  };

  std::optional<Subject> ReadTest() const;
  std::optional<Subject> ReadAlert() const;
  /// Nothing when the record or its owner is gone. Throws Error.
  std::optional<Subject> Read(NodeKind node, const TextOf& properties, const TextOf& module) const;
  /// The server or group above the node of a test or alert.
  std::optional<Owner> OwnerOf(const QString& key) const;
  /// The properties as the user confirmed them. Throws Error.
  std::optional<QString> Edit(const Subject& subject) const;
  /// The properties, filled up with NULs to the size that the module asks for. Throws Error when they take more.
  QString Padded(const Subject& subject, const QString& installFolder) const;
  void TryAlert(const Subject& subject) const;

  EditorContext context_;
  plugins::ModuleCalls& calls_;
  ui::MessageBoxes boxes_;
  ui::ErrorTrap trap_;
};

}  // namespace quarl::editors
