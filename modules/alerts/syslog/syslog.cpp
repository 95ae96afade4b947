#include "alerts/syslog/SyslogModule.h"

QUARL_ALERT_MODULE(quarl::alerts::SyslogModule)
