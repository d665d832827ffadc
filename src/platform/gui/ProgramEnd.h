#pragma once

namespace quorbel {

/// Ends the program's event loop, whatever windows are open, and with it the work that runs in
/// slices (see ProgressWindow), which would keep the loop from ending. Main thread only.
void endProgram();

/// Whether endProgram() was called, and the loop has not ended yet.
bool isProgramEnding();

}  // namespace quorbel
