#pragma once

namespace quarl::test {

/// Runs all tests for a main() and gives its exit code. Returns when the threads that nobody waits for have ended, or
/// after two seconds: the leak check at the end of the process gives up when a thread goes while it looks.
int RunTests();

}  // namespace quarl::test
