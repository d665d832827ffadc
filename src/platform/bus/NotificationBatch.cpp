#include "platform/bus/NotificationBatch.h"

#include "platform/DescriptorIo.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

namespace quorbel {

namespace {

constexpr int kSeals = F_SEAL_WRITE | F_SEAL_SHRINK | F_SEAL_GROW;

std::optional<NotificationType> typeNamed(std::string_view name) {
    for (const NotificationType type : {NotificationType::kSet, NotificationType::kRemove}) {
        if (name == nameOf(type)) {
            return type;
        }
    }
    return std::nullopt;
}

/// How large a file is that nobody can change any more; nothing for any other, and for one that no
/// batch fills.
std::optional<std::size_t> sealedSize(int file) {
    const int seals = ::fcntl(file, F_GET_SEALS);
    struct stat status {};
    if (seals < 0 || (seals & kSeals) != kSeals || ::fstat(file, &status) != 0 ||
        status.st_size <= 0) {
        return std::nullopt;
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    return size <= NotificationBatch::kMostBytes ? std::optional(size) : std::nullopt;
}

/// The runs of all bytes; none when the extents are not theirs.
std::vector<NotificationRun> runsOf(std::string_view bytes,
                                    const std::vector<NotificationBatch::Extent> &extents) {
    std::vector<NotificationRun> runs;
    for (const auto &[name, length] : extents) {
        const auto type = typeNamed(name);
        if (!type || length == 0 || length > bytes.size() || bytes[length - 1] != '\n') {
            return {};
        }
        runs.push_back({*type, bytes.substr(0, length)});
        bytes.remove_prefix(length);
    }
    return bytes.empty() ? runs : std::vector<NotificationRun>();
}

}  // namespace

const char *nameOf(NotificationType type) {
    return type == NotificationType::kSet ? "Set" : "Remove";
}

UniqueFd NotificationBatch::write(const std::vector<NotificationRun> &runs) {
    UniqueFd file(::memfd_create("quorbel-batch", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    const bool isWhole =
        file.isOpen() &&
        std::ranges::all_of(runs,
                            [&file](const NotificationRun &run) {
                                return writeFully(file.get(), run.lines) == run.lines.size();
                            }) &&
        ::fcntl(file.get(), F_ADD_SEALS, kSeals | F_SEAL_SEAL) == 0;
    if (!isWhole) {
        file.reset();
    }
    return file;
}

std::optional<NotificationBatch> NotificationBatch::read(int file,
                                                         const std::vector<Extent> &extents) {
    const auto size = sealedSize(file);
    if (!size) {
        return std::nullopt;
    }
    NotificationBatch batch;
    batch.m_bytes = FileMapping(file, *size);
    if (!batch.m_bytes.isValid()) {
        return std::nullopt;
    }
    batch.m_runs = runsOf(batch.m_bytes.bytes(), extents);
    return batch.m_runs.empty() ? std::nullopt : std::optional(std::move(batch));
}

}  // namespace quorbel
