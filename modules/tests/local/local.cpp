#include "tests/local/LocalModule.h"

QUARL_TEST_MODULE(quarl::checks::LocalModule)
