#pragma once

#include "core/SavedFilter.h"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// Reads a file of filters. What is wrong is said in English, with the file and the line.
struct FilterFile {
    std::vector<SavedFilter> filters;
    std::string problem;
};
FilterFile readFilterFile(const std::filesystem::path &file);
/// Writes one, whole or not at all. Returns what went wrong; empty when nothing did.
std::string writeFilterFile(const std::filesystem::path &file,
                            const std::vector<SavedFilter> &filters);

/// The filters that the user keeps, in a file.
///
/// Each change is made to what the file holds at that moment, so that windows of several sessions,
/// and whoever edits the file, do not undo one another's work. What cannot be read is not
/// overwritten. Every change returns what went wrong, in English; empty when nothing did. Then
/// file and filters are as they were.
class SavedFilterStore {
public:
    /// Nothing is read or written yet. A file that is not there holds no filters.
    explicit SavedFilterStore(std::filesystem::path file) : m_file(std::move(file)) {}

    /// As they were read or changed last. None is of a group.
    [[nodiscard]] const std::vector<SavedFilter> &filters() const { return m_filters; }

    std::string load();
    /// In place of the one of that name, if there is one.
    std::string keep(const SavedFilter &filter);
    /// Those that are kept already just as they are, are left out; one whose name is taken gets a
    /// number behind it.
    std::string add(const std::vector<SavedFilter> &filters);
    std::string rename(std::string_view from, const std::string &to);
    std::string remove(std::string_view name);
    std::string mark(std::string_view name, std::optional<MarkColour> colour);

private:
    using Filters = std::vector<SavedFilter>;
    /// Returns what is wrong.
    using Change = std::function<std::string(Filters &)>;

    std::string change(const Change &change);

    std::filesystem::path m_file;
    Filters m_filters;
    std::string m_text;  // of the file, as it was read last; empty when it was not there
};

}  // namespace quorbel
