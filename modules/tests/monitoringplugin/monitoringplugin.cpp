#include "tests/monitoringplugin/PluginModule.h"

QUARL_STEPPED_TEST_MODULE(quarl::checks::PluginModule)
