#pragma once

namespace quorbel::testing {

/// Calls of the system with which files are made and changed, of the thread that sets this: each is
/// a step at which the process may end, or that may fail.
struct SystemSteps {
    bool areCounted = false;
    long untilEnd = -1;    ///< ends the process on the spot before that many more; -1: never
    long untilFault = -1;  ///< lets fail those from there on
    long faults = 0;       ///< how many fail
    int error = 0;         ///< with which errno
};
SystemSteps &systemSteps();

/// Syncing does nothing, so that many cases take little time. For all threads.
extern bool syncsNotAtAll;

}  // namespace quorbel::testing
