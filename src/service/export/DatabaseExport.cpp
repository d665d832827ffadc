#include "service/export/DatabaseExport.h"

#include "service/export/ExportDates.h"
#include "service/export/Sqlite.h"
#include "service/store/LogFiles.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quorbel {

namespace {

// Tells our databases from others: "Qrbl".
constexpr std::int64_t kApplicationId = 0x5172626C;
constexpr std::int64_t kVersion = 1;

constexpr const char *kMakeTables = R"(
CREATE TABLE events (id INTEGER PRIMARY KEY, time INTEGER, date TEXT, priority TEXT, host TEXT,
                     message TEXT);
CREATE INDEX events_time ON events (time);
CREATE TABLE sources (number INTEGER PRIMARY KEY, name TEXT UNIQUE, inode INTEGER, size INTEGER,
                      tail INTEGER, open INTEGER, rows INTEGER, dateFormat TEXT);
PRAGMA application_id = 0x5172626C;
PRAGMA user_version = 1;
)";

/// The rows of source n have the ids from n * kIdsPerSource on.
constexpr std::int64_t kIdsPerSource = std::int64_t{1} << 32U;

/// A log file of which the database holds rows, or is to.
struct KnownSource {
    std::int64_t number = 0;
    std::int64_t rows = 0;
    std::string dateFormat;
    LogMark mark;
    const LogSource *source = nullptr;  ///< the log file; null when it is gone
    /// Where in it that begins for which there are no rows. At 0, those that there are have to go.
    std::uint64_t begin = 0;
};

/// The lines of log files whose rows a run exchanges, in bytes.
struct Change {
    std::uint64_t removed = 0;
    std::uint64_t inserted = 0;
};

/// Whether the disk has room for the change. A transaction that fills it before it is taken back
/// would cost new events their place, time after time.
bool hasRoomForChange(SqliteDatabase &database, const std::filesystem::path &file, Change change) {
    if (change.removed == 0 && change.inserted == 0) {
        return true;
    }
    // With its date in words and its place in the index, a row takes up to twice as much as its
    // line.
    constexpr std::uint64_t kGrowth = 2;
    // What is removed stays in the journal until the end of the transaction, and its pages in the
    // database are used again, as are those that were free before.
    const std::int64_t free = database.number("PRAGMA freelist_count").value_or(0) *
                              database.number("PRAGMA page_size").value_or(0);
    const std::uint64_t journal = kGrowth * change.removed;
    const std::uint64_t reused = journal + static_cast<std::uint64_t>(free);
    const std::uint64_t rows = kGrowth * change.inserted;
    // Not the file itself: closing it once more would give up the locks that SQLite holds on it.
    const UniqueFd folder(::open(file.parent_path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    return hasRoomFor(folder.get(), journal + rows - std::min(rows, reused));
}

/// One run, within one transaction.
class DatabaseUpdate {
public:
    DatabaseUpdate(SqliteDatabase &database, const ExportTarget &target,
                   const std::atomic<bool> &stop)
        : m_database(database),
          m_dateFormat(target.dateFormat),
          m_dates(target.dateFormat),
          m_stop(stop),
          m_insert(database, "INSERT INTO events VALUES (?, ?, ?, ?, ?, ?)"),
          m_delete(database, "DELETE FROM events WHERE id >= ? AND id < ?"),
          m_note(database, "INSERT OR REPLACE INTO sources VALUES (?, ?, ?, ?, ?, ?, ?, ?)"),
          m_forget(database, "DELETE FROM sources WHERE number = ?") {}

    /// Finds out what is to be done. To be called first.
    bool plan(const LogSources &sources) {
        if (!readKnown()) {
            return false;
        }
        for (const LogSource &source : sources.all()) {
            auto known = std::ranges::find(m_known, source.mark().name,
                                           [](const KnownSource &k) { return k.mark.name; });
            if (known == m_known.end()) {
                const std::int64_t number = m_known.empty() ? 1 : m_known.back().number + 1;
                known = m_known.insert(known, {number, 0, m_dateFormat, {}});
            }
            known->source = &source;
            const bool goesOn = known->dateFormat == m_dateFormat && source.continues(known->mark);
            known->begin = goesOn ? known->mark.size : 0;
        }
        return true;
    }
    [[nodiscard]] Change change() const {
        Change change;
        for (const KnownSource &known : m_known) {
            change.removed += known.begin == 0 ? known.mark.size : 0;
            change.inserted +=
                known.source != nullptr ? known.source->mark().size - known.begin : 0;
        }
        return change;
    }
    bool run() {
        return std::ranges::all_of(
            m_known, [this](KnownSource &known) { return !m_stop && bringUpToDate(known); });
    }
    /// Why run() failed, when that was not the database; 0 else.
    [[nodiscard]] int readError() const { return m_readError; }

private:
    bool readKnown() {
        SqliteStatement query(m_database,
                              "SELECT number, rows, dateFormat, name, inode, size, tail, open "
                              "FROM sources ORDER BY number");
        while (query.step()) {
            m_known.push_back(
                {query.integer(0),
                 query.integer(1),
                 query.text(2),
                 {query.text(3), static_cast<std::uint64_t>(query.integer(4)),
                  static_cast<std::uint64_t>(query.integer(5)),
                  static_cast<std::uint64_t>(query.integer(6)), query.integer(7) != 0}});
        }
        return !query.hasFailed();
    }

    bool bringUpToDate(KnownSource &known) {
        if (known.source == nullptr) {
            return removeRows(known) && m_forget.with(known.number).run();
        }
        const LogSource &source = *known.source;
        if (known.dateFormat == m_dateFormat && source.mark() == known.mark) {
            return true;
        }
        if (known.begin == 0) {
            if (!removeRows(known)) {
                return false;
            }
            known.rows = 0;
        }
        return insertRows(source, known.begin, known) && note(source, known);
    }

    bool removeRows(const KnownSource &known) {
        return known.rows == 0 ||
               m_delete.with(known.number * kIdsPerSource, (known.number + 1) * kIdsPerSource)
                   .run();
    }

    bool insertRows(const LogSource &source, std::uint64_t begin, KnownSource &known) {
        bool works = true;
        const bool isRead = source.read(begin, [&](const LogLine &line) {
            m_dates.show(line.date);
            works = m_insert
                        .with(known.number * kIdsPerSource + known.rows, m_dates.seconds(),
                              m_dates.text(), line.priority, line.host, line.message)
                        .run();
            ++known.rows;
            return works && !m_stop;
        });
        if (!isRead) {
            m_readError = errno;
        }
        return isRead && works && !m_stop;
    }

    bool note(const LogSource &source, const KnownSource &known) {
        const LogMark &mark = source.mark();
        return m_note
            .with(known.number, std::string_view(mark.name), static_cast<std::int64_t>(mark.inode),
                  static_cast<std::int64_t>(mark.size), static_cast<std::int64_t>(mark.tail),
                  std::int64_t{mark.open ? 1 : 0}, known.rows, std::string_view(m_dateFormat))
            .run();
    }

    SqliteDatabase &m_database;
    const std::string m_dateFormat;
    ExportDates m_dates;
    const std::atomic<bool> &m_stop;
    SqliteStatement m_insert;
    SqliteStatement m_delete;
    SqliteStatement m_note;
    SqliteStatement m_forget;
    std::vector<KnownSource> m_known;
    int m_readError = 0;
};

enum class Ownership { kOurs, kEmpty, kForeign, kUnknown };

Ownership ownershipOf(SqliteDatabase &database) {
    const auto tables = database.number("SELECT count(*) FROM sqlite_master");
    if (!tables) {
        return database.code() == SQLITE_NOTADB ? Ownership::kForeign : Ownership::kUnknown;
    }
    if (database.number("PRAGMA application_id") == kApplicationId &&
        database.number("PRAGMA user_version") == kVersion) {
        return Ownership::kOurs;
    }
    return *tables == 0 && database.number("PRAGMA application_id") == 0 ? Ownership::kEmpty
                                                                         : Ownership::kForeign;
}

std::string problemOf(const SqliteDatabase &database, const std::filesystem::path &file) {
    const int code = database.code() & 0xFF;
    const bool isForbidden =
        code == SQLITE_CANTOPEN || code == SQLITE_READONLY || code == SQLITE_PERM;
    if (isForbidden) {
        return cannotWrite(file, database.systemError() != 0 ? database.systemError() : EACCES);
    }
    return file.string() + " could not be written: " + database.message();
}

}  // namespace

std::optional<std::string> DatabaseExport::run(const ExportTarget &target,
                                               const LogSources &sources,
                                               const std::atomic<bool> &stop) {
    SqliteDatabase database(target.file);
    if (!database.isOpen()) {
        return problemOf(database, target.file);
    }
    database.endWhen(stop);
    const Ownership ownership = ownershipOf(database);
    if (ownership == Ownership::kForeign) {
        return target.file.string() + " is not a database of events and was left as it is";
    }
    // Somebody may have switched to a mode that leaves other files beside this one.
    if (ownership == Ownership::kUnknown || !database.execute("PRAGMA journal_mode = DELETE") ||
        !database.execute("BEGIN IMMEDIATE") ||
        (ownership == Ownership::kEmpty && !database.execute(kMakeTables))) {
        return problemOf(database, target.file);
    }
    // The end of this closes the statements, without which the transaction could not end.
    std::optional<std::string> problem;
    {
        DatabaseUpdate update(database, target, stop);
        const bool isPlanned = update.plan(sources);
        const bool hasRoom = !isPlanned || hasRoomForChange(database, target.file, update.change());
        const bool works = isPlanned && hasRoom && update.run();
        if (!hasRoom) {
            problem = cannotWrite(target.file, ENOSPC);
        } else if (!works && update.readError() != 0) {
            problem = "The log files cannot be read for " + target.file.string();
        } else if (!works && !stop) {
            problem = problemOf(database, target.file);
        }
        if (works && database.execute("COMMIT")) {
            return std::nullopt;
        }
        if (works) {
            problem = problemOf(database, target.file);
        }
    }
    database.execute("ROLLBACK");
    return problem;
}

}  // namespace quorbel
