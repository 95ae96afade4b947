#include "alerts/command/CommandModule.h"

QUARL_ALERT_MODULE(quarl::alerts::CommandModule)
