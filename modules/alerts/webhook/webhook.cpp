#include "alerts/webhook/WebhookModule.h"

QUARL_ALERT_MODULE(quarl::alerts::WebhookModule)
