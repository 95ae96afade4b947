#include "alerts/desktop/DesktopModule.h"

QUARL_ALERT_MODULE(quarl::alerts::DesktopModule)
