#pragma once

namespace quorbel {

/// quorbelctl: runs the command that the arguments name, and returns how to end.
int runControl(int count, char **values);

}  // namespace quorbel
