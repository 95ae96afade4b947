#pragma once

#include <map>
#include <string>

namespace quarl::bench {

/// The medians of a run: benchmark name ("TreePainted/10000"), or name and counter ("TreePainted/10000:bytes_a_node"),
/// and its CPU time in nanoseconds or the counter's value.
using Medians = std::map<std::string, double>;

/// Prints a line a goal whose benchmarks have run: what, figure, limit, and whether it holds. Gives how many do not.
int PrintGoals(const Medians& medians);

}  // namespace quarl::bench
