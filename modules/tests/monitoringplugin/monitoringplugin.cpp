#include "tests/monitoringplugin/PluginModule.h"

QUARL_TEST_MODULE(quarl::checks::PluginModule)
