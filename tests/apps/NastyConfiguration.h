#pragma once

#include "store/Configuration.h"

namespace quarl::test {

/// A configuration of a few dozen records whose every value lies at an edge: names with controls, quotes, line feeds,
/// right-to-left text, emoji, byte order marks and 10,000 characters, property strings with every byte below 256, ids
/// and numbers at the ends of their ranges, schedules with and without day, unit and interval. The same seed gives
/// the same one; all ids are distinct and every type is used.
store::Configuration NastyConfiguration(unsigned seed);

}  // namespace quarl::test
