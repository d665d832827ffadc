#include "service/export/TextExport.h"

#include "platform/DescriptorIo.h"
#include "platform/Files.h"
#include "service/export/ExportDates.h"
#include "service/store/LogFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

constexpr mode_t kMode = 0640;

/// Writes rows to a file, a block of whole lines at a time.
class RowWriter {
public:
    RowWriter(int fd, const ExportTarget &target, const std::atomic<bool> &stop)
        : m_fd(fd),
          m_separator(hasExtension(target.file.filename().string(), "csv") ? ',' : '\t'),
          m_dates(target.dateFormat),
          m_stop(stop) {}

    void writeTitles() { append({"Date", "Priority", "Host", "Message"}); }

    /// Writes a source's rows from `begin` on. False, with errno, when that fails.
    bool write(const LogSource &source, std::uint64_t begin) {
        const bool isRead = source.read(begin, [this](const LogLine &line) {
            m_dates.show(line.date);
            append({m_dates.text(), line.priority, line.host, line.message});
            return m_error == 0 && !m_stop;
        });
        m_error = isRead || m_error != 0 ? m_error : errno;
        errno = m_error;
        return m_error == 0;
    }

    bool flush() {
        if (m_error == 0 && writeFully(m_fd, m_block) != m_block.size()) {
            m_error = errno;
        }
        m_block.clear();
        errno = m_error;
        return m_error == 0;
    }

private:
    void append(std::initializer_list<std::string_view> fields) {
        constexpr std::size_t kBlock = std::size_t{256} * 1024;
        for (const std::string_view field : fields) {
            m_block += field;
            m_block += m_separator;
        }
        m_block.back() = '\n';
        if (m_block.size() >= kBlock) {
            flush();
        }
    }

    int m_fd;
    char m_separator;
    ExportDates m_dates;
    const std::atomic<bool> &m_stop;
    std::string m_block;
    int m_error = 0;
};

/// A file that goes away again unless it is renamed.
class TemporaryFile {
public:
    explicit TemporaryFile(std::filesystem::path path) : m_path(std::move(path)) {
        // One that a crash left.
        ::unlink(m_path.c_str());
        m_file = UniqueFd(
            ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, kMode));
    }
    ~TemporaryFile() {
        if (m_file.isOpen() && !m_path.empty()) {
            ::unlink(m_path.c_str());
        }
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    [[nodiscard]] const UniqueFd &file() const { return m_file; }
    /// Synced first, so that the name never stands for less than all of it.
    bool renameTo(const std::filesystem::path &target) {
        struct stat old {};
        if (::stat(target.c_str(), &old) == 0) {
            ::fchmod(m_file.get(), old.st_mode & 0777U);
        }
        if (::fdatasync(m_file.get()) != 0 || std::rename(m_path.c_str(), target.c_str()) != 0) {
            return false;
        }
        m_path.clear();
        return true;
    }

private:
    std::filesystem::path m_path;
    UniqueFd m_file;
};

}  // namespace

std::optional<std::string> TextExport::run(const ExportTarget &target, const LogSources &sources,
                                           const std::atomic<bool> &stop) {
    if (canAppend(target, sources)) {
        return append(sources, stop);
    }
    m_written.reset();
    return rewrite(target, sources, stop);
}

/// Whether the file is as it was left, and the log files have only grown at their end since.
bool TextExport::canAppend(const ExportTarget &target, const LogSources &sources) const {
    struct stat status {};
    if (!m_written || m_written->target != target || ::stat(target.file.c_str(), &status) != 0 ||
        status.st_dev != m_written->device || status.st_ino != m_written->inode ||
        static_cast<std::uint64_t>(status.st_size) != m_written->size) {
        return false;
    }
    const auto &marks = m_written->marks;
    const auto &all = sources.all();
    if (marks.size() > all.size()) {
        return false;
    }
    for (std::size_t i = 0; i < marks.size(); ++i) {
        const bool isLast = i + 1 == marks.size();
        if (isLast ? !all[i].continues(marks[i]) : all[i].mark() != marks[i]) {
            return false;
        }
    }
    return true;
}

std::optional<std::string> TextExport::append(const LogSources &sources,
                                              const std::atomic<bool> &stop) {
    Written written = *std::exchange(m_written, std::nullopt);
    const auto &file = written.target.file;
    const UniqueFd output(::open(file.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NOFOLLOW));
    if (!output.isOpen()) {
        return cannotWrite(file, errno);
    }
    RowWriter writer(output.get(), written.target, stop);
    bool works = true;
    for (std::size_t i = 0; works && !stop && i < sources.all().size(); ++i) {
        const LogSource &source = sources.all()[i];
        const std::uint64_t begin = i < written.marks.size() ? written.marks[i].size : 0;
        works = begin == source.mark().size || writer.write(source, begin);
    }
    struct stat status {};
    if (!works || !writer.flush() || ::fstat(output.get(), &status) != 0) {
        std::string problem = cannotWrite(file, errno);
        // Without this, the last line may be a part of one.
        if (::ftruncate(output.get(), static_cast<off_t>(written.size)) == 0) {
            m_written = std::move(written);
        }
        return problem;
    }
    if (!stop) {
        noteWritten(written.target, sources, status);
    }
    return std::nullopt;
}

std::optional<std::string> TextExport::rewrite(const ExportTarget &target,
                                               const LogSources &sources,
                                               const std::atomic<bool> &stop) {
    TemporaryFile temporary(target.file.parent_path() /
                            ("." + target.file.filename().string() + ".quorbel-new"));
    const UniqueFd &output = temporary.file();
    if (!output.isOpen()) {
        return cannotWrite(target.file, errno);
    }
    // A copy that fills the disk would cost new events their place, time after time.
    std::uint64_t bytes = 0;
    for (const LogSource &source : sources.all()) {
        bytes += source.mark().size;
    }
    RowWriter writer(output.get(), target, stop);
    writer.writeTitles();
    bool works = hasRoomFor(output.get(), bytes);
    for (std::size_t i = 0; works && !stop && i < sources.all().size(); ++i) {
        works = writer.write(sources.all()[i], 0);
    }
    struct stat status {};
    works = works && writer.flush() && ::fstat(output.get(), &status) == 0;
    if (works && stop) {
        return std::nullopt;
    }
    if (!works || !temporary.renameTo(target.file)) {
        return cannotWrite(target.file, errno);
    }
    noteWritten(target, sources, status);
    return std::nullopt;
}

void TextExport::noteWritten(const ExportTarget &target, const LogSources &sources,
                             const struct stat &status) {
    Written written;
    written.target = target;
    written.device = status.st_dev;
    written.inode = status.st_ino;
    written.size = static_cast<std::uint64_t>(status.st_size);
    for (const LogSource &source : sources.all()) {
        written.marks.push_back(source.mark());
    }
    m_written = std::move(written);
}

}  // namespace quorbel
