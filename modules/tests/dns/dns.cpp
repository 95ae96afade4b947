#include "tests/dns/DnsModule.h"

QUARL_TEST_MODULE(quarl::checks::DnsModule)
