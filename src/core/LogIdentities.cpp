#include "core/LogIdentities.h"

#include "common/LogNames.h"
#include "platform/Files.h"

#include <algorithm>

namespace quorbel {

void LogIdentities::set(const std::vector<LogExtent> &read) {
    m_files.clear();
    for (const LogExtent &extent : read) {
        // One that was replaced since is none that there is.
        const auto now = markOf(extent.file);
        m_files[extent.file.filename().string()] =
            now && now->inode == extent.inode ? *now : FileMark{extent.inode, 0};
    }
}

void LogIdentities::remember() {
    m_files.clear();
    rememberNew();
}

void LogIdentities::rememberNew() {
    for (const std::string &name : listFolder(m_folder)) {
        const auto identity = hasExtension(name, "log") ? markOf(m_folder / name) : std::nullopt;
        if (identity) {
            m_files.try_emplace(name, *identity);
        }
    }
}

void LogIdentities::add(const FilePlace &place) {
    // Else there is none yet.
    if (place.file != FileMark{}) {
        m_files.try_emplace(place.name, place.file);
    }
}

bool LogIdentities::areThere() const {
    return std::ranges::all_of(
        m_files, [this](const auto &file) { return markOf(m_folder / file.first) == file.second; });
}

FilePlace LogIdentities::placeBehind(const std::vector<LogExtent> &read) const {
    FilePlace place;
    for (const LogExtent &extent : read) {
        const std::string name = extent.file.filename().string();
        if (isDailyLogName(name) && name > place.name) {
            place = {name, m_files.at(name), extent.bytes};
        }
    }
    return place;
}

}  // namespace quorbel
