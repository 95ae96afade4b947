#include "plugins/pTestPlugin.h"

namespace quarl::plugins {
namespace {

constexpr ManagerKind kKind{
    .kind = ModuleKind::Test,
    .window = "pTestPlugin",
    .caption = "Test plug-in",
    .label = "Add or remove test plug-ins",
    .column = "Test",
    .idField = "IDTestType",
    .types = &store::SystemConfig::GetTestTypes,
    .add = &store::SystemConfig::AddTestType,
    .remove = &store::SystemConfig::RemoveTestType,
};

}  // namespace

pTestPlugin::pTestPlugin(const ManagerContext& context) : ManagerDialog(kKind, context) {}

}  // namespace quarl::plugins
