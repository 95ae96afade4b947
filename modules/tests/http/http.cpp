#include "tests/http/HttpModule.h"

QUARL_TEST_MODULE(quarl::checks::HttpModule)
