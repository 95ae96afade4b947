#include "quarl_module.h"

QUARL_DEFINE_MODULE(QUARL_MODULE_TEST)
