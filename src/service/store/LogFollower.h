#pragma once

#include "platform/UniqueFd.h"
#include "service/store/LogFiles.h"

#include <functional>
#include <span>
#include <string>

namespace quorbel {

/// What a log file loses, or gets, when it is replaced. Both ascend; one of them is empty.
struct LogChange {
    std::span<const ByteRange> removed;
    std::span<const Insertion> inserted;
};

/// A log file that is about to be replaced, or removed.
struct LogEdit {
    const std::string &name;
    const UniqueFd &file;         ///< as it is, open for reading
    const UniqueFd *replacement;  ///< null: the file is removed with all that it holds
    const LogChange &change;
};

/// Whoever keeps places in the log files that move with them (LogStore::addFollower).
class LogFollower {
public:
    virtual ~LogFollower() = default;

    /// Called on the thread that edits, for one edit at a time. Calls `commit`, which does it, once
    /// and returns what that returned, or does not call it and returns false with errno when its
    /// places could be lost that way. The replacement is whole only once that was done. Events go
    /// on being stored meanwhile, also to the file itself.
    virtual bool onEdit(const LogEdit &edit, const std::function<bool()> &commit) = 0;
};

}  // namespace quorbel
