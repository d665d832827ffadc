#pragma once

#include "control/ExitCode.h"

namespace quorbel {

// The commands of quorbelctl. `values[0]` is how messages name the program, the rest the command's
// arguments. Each says what is wrong on the standard error.

ExitCode runStatus(int count, char **values);
ExitCode runTail(int count, char **values);
ExitCode runFind(int count, char **values);
ExitCode runStats(int count, char **values);
ExitCode runTestMessage(int count, char **values);
ExitCode runCheckSettings(int count, char **values);

}  // namespace quorbel
