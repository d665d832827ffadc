#include "service/export/ExportTarget.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>

namespace quorbel {

namespace {

/// The service's own folder holds its log files, settings and keys.
bool mayStandInLibrary(const std::filesystem::path &file) {
    constexpr std::array<std::string_view, 3> kExtensions{".txt", ".csv", ".db"};
    return std::ranges::find(kExtensions, file.extension()) != kExtensions.end();
}

bool isBelow(const std::filesystem::path &file, const std::filesystem::path &folder) {
    return std::ranges::mismatch(folder, file).in1 == folder.end();
}

}  // namespace

std::optional<std::string> checkExportTarget(std::filesystem::path &file,
                                             const std::filesystem::path &library) {
    // For the system, a name ends at a NUL: it would be another file than the one that is checked.
    if (!file.is_absolute() || !file.has_filename() ||
        file.native().find('\0') != std::string::npos) {
        return file.string() + " is not the full path of a file";
    }
    std::error_code error;
    const auto real = std::filesystem::weakly_canonical(file, error);
    if (error) {
        return cannotWrite(file, error.value());
    }
    const auto status = std::filesystem::status(real, error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        return file.string() + " is not a file that an export may replace";
    }
    if (isBelow(real, std::filesystem::weakly_canonical(library, error)) &&
        !mayStandInLibrary(real)) {
        return file.string() + " is in the service's own folder, but is not a txt, csv or db file";
    }
    file = real;
    return std::nullopt;
}

std::string cannotWrite(const std::filesystem::path &file, int error) {
    std::string text =
        file.string() + " could not be written: " + std::generic_category().message(error);
    if (error == EACCES || error == EPERM || error == EROFS) {
        text +=
            "; the service may write below /Library/Quorbel only, unless its unit allows "
            "another folder (ReadWritePaths=)";
    }
    return text;
}

}  // namespace quorbel
