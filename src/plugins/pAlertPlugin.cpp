#include "plugins/pAlertPlugin.h"

namespace quarl::plugins {
namespace {

constexpr ManagerKind kKind{
    .kind = ModuleKind::Alert,
    .window = "pAlertPlugin",
    .caption = "Alert Plug-in",
    .label = "Add or remove alert plug-ins",
    .column = "Alert",
    .idField = "IDAlertType",
    .types = &store::SystemConfig::GetAlertTypes,
    .add = &store::SystemConfig::AddAlertType,
    .remove = &store::SystemConfig::RemoveAlertType,
};

}  // namespace

pAlertPlugin::pAlertPlugin(const ManagerContext& context) : ManagerDialog(kKind, context) {}

}  // namespace quarl::plugins
