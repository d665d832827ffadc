#pragma once

#include "common/LogReader.h"
#include "platform/FilePlace.h"

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace quorbel {

/// Which files the log was of when the window read it: another one under the same name means that
/// something was taken out of it, or put in.
class LogIdentities {
public:
    explicit LogIdentities(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    /// Those that were read.
    void set(const std::vector<LogExtent> &read);
    /// Those that there are.
    void remember();
    /// The same, but for those that are known by their names.
    void rememberNew();
    /// One in which the log goes on.
    void add(const FilePlace &place);
    /// Whether each is there still.
    [[nodiscard]] bool areThere() const;
    /// Up to where the log was read, which the service goes on from.
    [[nodiscard]] FilePlace placeBehind(const std::vector<LogExtent> &read) const;

private:
    const std::filesystem::path m_folder;
    std::map<std::string, FileMark> m_files;
};

}  // namespace quorbel
