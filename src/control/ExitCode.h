#pragma once

namespace quorbel {

/// How quorbelctl ends; the manual page promises these numbers.
enum class ExitCode : int {
    kDone = 0,
    kNothing = 1,     ///< nothing was found, something is wrong, or could not be done
    kUsage = 2,       ///< the arguments are wrong
    kNotThere = 3,    ///< the service does not run, or its folder is not there
    kNotAllowed = 4,  ///< this user may not ask the service, or not read its files
};

}  // namespace quorbel
