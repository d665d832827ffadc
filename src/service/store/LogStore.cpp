#include "service/store/LogStore.h"

#include "common/LogNames.h"
#include "platform/DescriptorIo.h"
#include "platform/Files.h"
#include "service/base/Journal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

namespace quorbel {

namespace {

constexpr mode_t kFolderMode = 0750;

std::string errorText(int error) {
    return std::generic_category().message(error);
}

std::size_t countLines(std::string_view lines) {
    // A number that is no longer than a byte lets the compiler count many bytes at once.
    constexpr std::size_t kBlock = 255;
    std::size_t count = 0;
    while (!lines.empty()) {
        std::uint8_t inBlock = 0;
        for (const char c : lines.substr(0, kBlock)) {
            inBlock = static_cast<std::uint8_t>(inBlock + (c == '\n' ? 1 : 0));
        }
        count += inBlock;
        lines.remove_prefix(std::min(kBlock, lines.size()));
    }
    return count;
}

}  // namespace

LogStore::LogStore(std::filesystem::path folder)
    : m_folder(std::move(folder)),
      m_syncedFolder(openFolder()),
      m_syncThread([this] { syncWhenDirty(); }) {}

LogStore::~LogStore() {
    {
        const MutexLock lock(m_mutex);
        m_stop = true;
    }
    m_wakeSync.notifyOne();
    m_syncThread.join();
}

void LogStore::prepare() {
    if (!makeLogFolder(m_folder)) {
        say(JournalLevel::kError,
            "The folder " + m_folder.string() + " cannot be created: " + errorText(errno));
        return;
    }
    for (const std::string &name : listFolder(m_folder)) {
        if (name.ends_with(replacementName(".log"))) {
            ::unlink(path(name).c_str());
        } else if (isDailyLogName(name) && !repairFile(name)) {
            say(JournalLevel::kError,
                "The end of " + name + " cannot be repaired: " + errorText(errno));
        }
    }
}

bool LogStore::repairFile(const std::string &name) const {
    const UniqueFd file = openForAppending(path(name), 0);
    const TailState state = file.isOpen() ? repairTail(file.get()) : TailState::kFailed;
    if (state == TailState::kCompleted) {
        say(JournalLevel::kWarning, "The last event in " + name + " may be incomplete");
    } else if (state == TailState::kCutOff) {
        say(JournalLevel::kWarning, "An incomplete event at the end of " + name + " was removed");
    }
    return state != TailState::kFailed;
}

LogStore::Result LogStore::append(std::string_view lines, std::int64_t seconds, bool urgent) {
    if (seconds != m_nameSeconds) {
        m_name = logFileName(seconds);
        m_nameSeconds = seconds;
    }
    Result result;
    int error = 0;
    bool wake = false;
    {
        const MutexLock lock(m_mutex);
        if (openFor(m_name)) {
            result = write(lines);
        } else {
            result.notStored = countLines(lines);
        }
        error = errno;
        // A file that somebody removed gives its room back when it is closed, which the thread that
        // syncs does.
        const bool holdsRoom = result.notStored > 0 && !m_retired.empty();
        const bool hurry = (urgent && result.stored > 0) || holdsRoom;
        wake = ((result.stored > 0 || holdsRoom) && !m_dirty) || (hurry && !m_urgent);
        m_dirty = m_dirty || result.stored > 0 || holdsRoom;
        m_dirtyEvents += result.stored;
        m_urgent = m_urgent || hurry;
    }
    if (wake) {
        m_wakeSync.notifyOne();
    }
    if (result.stored > 0) {
        tellReaders();
    }
    noteState(seconds, result.notStored, error);
    return result;
}

/// Sees to it that m_file is the file of that name in the folder, and ends in a whole line.
bool LogStore::openFor(const std::string &name) {
    // Somebody may have moved or removed the file, or the folder; what is written into a file
    // without a name is lost.
    if (m_fileName == name && m_fileIdentity && m_fileIdentity == identityOf(m_filePath)) {
        return true;
    }
    retireFile();
    const std::filesystem::path file = path(name);
    m_sparesForFile.refill();
    const auto open = [&file] { return openForAppending(file, O_CREAT); };
    m_file = m_sparesForFile.useFor(open);
    if (!m_file.isOpen() && errno == ENOENT && ::mkdir(m_folder.c_str(), kFolderMode) == 0) {
        m_file = m_sparesForFile.useFor(open);
    }
    if (!m_file.isOpen()) {
        return false;
    }
    if (repairTail(m_file.get()) == TailState::kFailed) {
        const int error = errno;
        m_file.reset();
        errno = error;
        return false;
    }
    m_fileName = name;
    m_filePath = file;
    m_fileIdentity = identityOf(m_file);
    m_fileMark = markOf(m_file.get()).value_or(FileMark{});
    m_folderChanged = true;
    ++m_fileChanges;
    return true;
}

LogStore::Result LogStore::write(std::string_view lines) {
    const std::size_t written = writeFully(m_file.get(), lines);
    if (written == lines.size()) {
        return {countLines(lines), 0, placeBefore(0)};
    }
    const int error = errno;
    // The lines that are whole stay; the piece of the next one goes.
    const std::string_view whole = lines.substr(0, lines.substr(0, written).rfind('\n') + 1);
    const FilePlace behind = placeBefore(written - whole.size());
    struct stat status {};
    if (whole.size() < written &&
        (::fstat(m_file.get(), &status) != 0 ||
         ::ftruncate(m_file.get(), status.st_size - static_cast<off_t>(written - whole.size())) !=
             0)) {
        // Opening it again repairs its end.
        retireFile();
    }
    errno = error;
    return {countLines(whole), countLines(lines) - countLines(whole), behind};
}

/// In the open file, so many bytes before where it was written to last.
FilePlace LogStore::placeBefore(std::size_t unwritten) const {
    const off_t end = ::lseek(m_file.get(), 0, SEEK_CUR);
    return {m_fileName, m_fileMark, static_cast<std::uint64_t>(end) - unwritten};
}

FilePlace LogStore::end() {
    const MutexLock lock(m_mutex);
    std::string name = m_fileName;
    if (name.empty()) {
        const std::vector<std::string> names = listFolder(m_folder);
        const auto newest = std::find_if(names.rbegin(), names.rend(), isDailyLogName);
        name = newest == names.rend() ? "" : *newest;
    }
    std::error_code error;
    const auto size = std::filesystem::file_size(path(name), error);
    const auto identity = markOf(path(name));
    return name.empty() || error || !identity ? FilePlace{name, {}, 0}
                                              : FilePlace{name, *identity, size};
}

void LogStore::retireFile() {
    if (m_file.isOpen()) {
        m_retired.push_back(std::move(m_file));
    }
    m_fileName.clear();
}

void LogStore::noteState(std::int64_t seconds, std::size_t lost, int error) {
    // On a disk that is about full, a short line fits now and then. The clock may be set back.
    constexpr std::int64_t kCalm = 1;
    m_lost += lost;
    if (lost > 0) {
        m_lastLoss = seconds;
        if (m_works) {
            say(JournalLevel::kError,
                "Events cannot be stored in " + m_folder.string() + ": " + errorText(error));
        }
        m_works = false;
    } else if (!m_works && (seconds > m_lastLoss + kCalm || seconds < m_lastLoss)) {
        say(JournalLevel::kNotice, "Events are stored again; " + std::to_string(m_lost) +
                                       " could not be stored meanwhile");
        m_works = true;
        m_lost = 0;
    }
}

std::optional<std::vector<std::string>> LogStore::fileNames() const {
    std::error_code error;
    std::vector<std::string> names = listFolder(m_folder, error);
    if (error) {
        errno = error.value();
        return std::nullopt;
    }
    std::erase_if(names, [](const std::string &name) { return !hasExtension(name, "log"); });
    return names;
}

std::filesystem::path LogStore::path(const std::string &name) const {
    return m_folder / name;
}

std::uint64_t LogStore::settledSize(const UniqueFd &file) {
    const MutexLock lock(m_mutex);
    struct stat status {};
    return ::fstat(file.get(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

UniqueFd LogStore::openFolder() const {
    return UniqueFd(::open(m_folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

void LogStore::syncFolder() const {
    const UniqueFd folder = openFolder();
    if (folder.isOpen()) {
        ::fsync(folder.get());
    }
}

void LogStore::syncWhenDirty() {
    constexpr std::chrono::seconds kDelay{1};
    MutexLock lock(m_mutex);
    while (!m_stop || m_dirty) {
        m_wakeSync.wait(lock, [this]() REQUIRES(m_mutex) { return m_dirty || m_stop; });
        m_wakeSync.waitFor(lock, kDelay, [this]() REQUIRES(m_mutex) { return m_urgent || m_stop; });
        Dirty dirty = takeDirty();
        lock.unlock();
        const int error = sync(dirty);
        noteSync(dirty, error);
        lock.lock();
        // A file that is on the disk without its name is lost, too.
        m_folderChanged = m_folderChanged || (dirty.folderChanged && error != 0);
        giveBack(std::move(dirty));
    }
}

LogStore::Dirty LogStore::takeDirty() {
    Dirty dirty{std::exchange(m_retired, {}), std::nullopt, std::exchange(m_dirtyEvents, 0),
                std::exchange(m_folderChanged, false)};
    if (m_file.isOpen()) {
        m_spareForSync.refill();
        dirty.file = m_spareForSync.duplicate(m_file.get());
    }
    m_dirty = false;
    m_urgent = false;
    return dirty;
}

/// The last error; 0 when all went well.
int LogStore::sync(const Dirty &dirty) {
    int error = 0;
    for (const UniqueFd &file : dirty.retired) {
        error = ::fdatasync(file.get()) == 0 ? error : errno;
    }
    if (dirty.file) {
        error = ::fdatasync(dirty.file->get()) == 0 ? error : errno;
    }
    if (dirty.folderChanged) {
        error = syncOwnFolder() ? error : errno;
    }
    return error;
}

bool LogStore::syncOwnFolder() {
    // Somebody may have moved it and made another one.
    if (!isSameFile(m_syncedFolder, m_folder)) {
        m_syncedFolder.reset();
        m_syncedFolder = openFolder();
    }
    return m_syncedFolder.isOpen() && ::fsync(m_syncedFolder.get()) == 0;
}

/// Closes the files, and keeps the descriptors that were kept for them.
void LogStore::giveBack(Dirty dirty) {
    for (UniqueFd &file : dirty.retired) {
        m_sparesForFile.refillWith(std::move(file));
    }
    if (dirty.file) {
        m_spareForSync.refillWith(*std::move(dirty.file));
    }
}

void LogStore::noteSync(const Dirty &dirty, int error) {
    if (error != 0) {
        m_unsynced += dirty.events;
        m_unsyncedNow += dirty.events;
    }
    if (m_syncWorks == (error == 0)) {
        return;
    }
    m_syncWorks = error == 0;
    if (m_syncWorks) {
        say(JournalLevel::kNotice,
            "Events are written to disk again; " + std::to_string(std::exchange(m_unsyncedNow, 0)) +
                " events stored before that may be lost if the machine stops");
    } else {
        say(JournalLevel::kError, "Events cannot be written to disk: " + errorText(error));
    }
}

}  // namespace quorbel
