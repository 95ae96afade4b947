#pragma once

namespace quarl::ctl {

/// Runs the command that the arguments name. Needs a QCoreApplication.
/// @return 0 done, 1 the command failed, 2 the arguments are wrong.
int RunCommandLine(int argc, char** argv);

}  // namespace quarl::ctl
