#pragma once

#include <string_view>

namespace quorbel {

/// Whether a process with exactly this short name runs on this machine. Names are compared as a
/// process table with room for 16 characters holds them, so a longer name never matches. A process
/// that has ended does not count, even when its parent has yet to take note. False when the process
/// table cannot be read.
bool isProcessRunning(std::string_view name);

}  // namespace quorbel
