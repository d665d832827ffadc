#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace quorbel {

/// Where an export goes, and how it shows dates.
struct ExportTarget {
    std::filesystem::path file;
    std::string dateFormat;  ///< as the settings hold it

    bool operator==(const ExportTarget &) const = default;
};

/// Why a file cannot be an export's target, as one line: it is not named by a full path, it is no
/// regular file, or it is one that the service needs in its own folder, `library`. Nothing when
/// it can be one as far as its name and kind tell. `file` is replaced by what it is a link to.
std::optional<std::string> checkExportTarget(std::filesystem::path &file,
                                             const std::filesystem::path &library);

/// "... could not be written: " and why; what to do about it where the service's unit keeps it from
/// writing.
std::string cannotWrite(const std::filesystem::path &file, int error);

}  // namespace quorbel
