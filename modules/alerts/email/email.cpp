#include "alerts/email/EmailModule.h"

QUARL_ALERT_MODULE(quarl::alerts::EmailModule)
