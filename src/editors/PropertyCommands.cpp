#include "editors/PropertyCommands.h"

#include <tuple>

#include "base/Error.h"
#include "base/InstallPaths.h"
#include "base/NodeKey.h"

namespace quarl::editors {
namespace {

constexpr QChar kNul(0);
constexpr qsizetype kResultLength = 255;

}  // namespace

PropertyCommands::PropertyCommands(EditorContext context, plugins::ModuleCalls& calls)
    : context_(std::move(context)), calls_(calls), boxes_(context_.window), trap_(QStringLiteral("Main"), boxes_) {}

// --- Commands ---

void PropertyCommands::mTestProperties_Click() {
  trap_("mTestproperties_Click", [&] {
    const auto test = ReadTest();
    if (!test) return;
    const auto edited = Edit(*test);
    if (edited) std::ignore = context_.stores.Tests().SetTestProperties(test->id, *edited);
  });
}

void PropertyCommands::mAlertProperties_Click() {
  trap_("mAlertProperties_Click", [&] {
    const auto alert = ReadAlert();
    if (!alert) return;
    const auto edited = Edit(*alert);
    if (edited) std::ignore = context_.stores.Alerts().SetAlertProperties(alert->id, *edited);
  });
}

void PropertyCommands::mAlertTest_Click() {
  trap_("mAlertTest_Click", [&] {
    if (const auto alert = ReadAlert()) TryAlert(*alert);
  });
}

// --- What the module gets ---

std::optional<PropertyCommands::Subject> PropertyCommands::ReadTest() const {
  store::TestStore& tests = context_.stores.Tests();
  return Read(
      NodeKind::Test, [&](qint32 id) { return tests.GetTestProperties(id); },
      [&](qint32 id) { return tests.GetTestModule(id); });
}

std::optional<PropertyCommands::Subject> PropertyCommands::ReadAlert() const {
  store::AlertStore& alerts = context_.stores.Alerts();
  return Read(
      NodeKind::Alert, [&](qint32 id) { return alerts.GetAlertProperties(id); },
      [&](qint32 id) { return alerts.GetAlertModule(id); });
}

std::optional<PropertyCommands::Subject> PropertyCommands::Read(NodeKind node, const TextOf& properties,
                                                                const TextOf& module) const {
  const QString key = context_.selection.SelectedKey();
  const qint32 id = IdBehind(node, key);
  const auto text = properties(id);
  if (!text) return {};
  const auto file = module(id);
  if (!file) return {};
  const auto owner = OwnerOf(key);
  if (!owner) return {};
  return Subject{node == NodeKind::Test ? ModuleKind::Test : ModuleKind::Alert, id, *text, *file, *owner};
}

std::optional<PropertyCommands::Owner> PropertyCommands::OwnerOf(const QString& key) const {
  const tree::ObjectTreeModel& nodes = context_.tree.Nodes();
  const QString owner = nodes.ParentOf(nodes.ParentOf(key));
  // The root group is no record; its name is that of its node.
  if (owner == NodeKey::kRoot) return Owner{nodes.TextOf(owner), {}};
  if (NodeKey::KindOf(owner) == NodeKind::Group) {
    const auto group = context_.stores.Groups().GetGroup(NodeKey::IdOf(owner));
    return group ? std::optional(Owner{group->name, {}}) : std::nullopt;
  }
  const auto server = context_.stores.Servers().GetServer(IdBehind(NodeKind::Server, owner));
  return server ? std::optional(Owner{server->name, server->ipAddress}) : std::nullopt;
}

QString PropertyCommands::Padded(const Subject& subject, const QString& installFolder) const {
  QString path = InstallPaths::ModulePath(installFolder, ModuleCallSite::BufferSize, subject.kind, subject.module);
  const qint16 size = calls_.GetBufferSize(subject.kind, path);
  const qsizetype length = subject.properties.toUtf8().size();
  if (size < length) {
    throw Error(QStringLiteral("The stored properties take %1 bytes, and the plug-in module %2 has room for %3.")
                    .arg(length)
                    .arg(subject.module)
                    .arg(size));
  }
  return subject.properties + QString(size - length, kNul);
}

std::optional<QString> PropertyCommands::Edit(const Subject& subject) const {
  const QString folder = context_.stores.Install().GetInstallPath();
  QString properties = Padded(subject, folder);
  QString path = InstallPaths::ModulePath(folder, ModuleCallSite::Properties, subject.kind, subject.module);
  Owner owner = subject.owner;
  if (calls_.SetProperties(subject.kind, path, owner.name, owner.address, properties) != 0) return {};
  // One only: what is before it is as the module left it.
  if (properties.endsWith(kNul)) properties.chop(1);
  return properties;
}

void PropertyCommands::TryAlert(const Subject& subject) const {
  const QString folder = context_.stores.Install().GetInstallPath();
  QString properties = Padded(subject, folder);
  QString path = InstallPaths::ModulePath(folder, ModuleCallSite::AlertTest, subject.kind, subject.module);
  Owner owner = subject.owner;
  QString title = QStringLiteral("Alert!");
  QString message = QStringLiteral("Quarl, this is a test.\r\nThe ") + owner.name +
                    QStringLiteral(" server in not down. It's only a test and it works.");
  QString result(kResultLength, u' ');
  if (calls_.Alert(path, owner.name, owner.address, title, message, properties, result) == 0) {
    boxes_.Info(Text::AlertTestSucceeded);
  } else {
    // A text in a buffer ends at its NUL.
    const qsizetype end = result.indexOf(kNul);
    boxes_.Warning(LoadText(Text::AlertTestFailed) + u' ' + result.left(end));
  }
}

}  // namespace quarl::editors
