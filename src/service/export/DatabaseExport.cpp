#include "service/export/DatabaseExport.h"

#include "service/export/ExportDates.h"
#include "service/export/Sqlite.h"

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

/// A log file of which the database holds rows.
struct KnownSource {
    std::int64_t number = 0;
    std::int64_t rows = 0;
    std::string dateFormat;
    LogMark mark;
    bool isThere = false;  ///< the log file still exists
};

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

    bool run(const LogSources &sources) {
        if (!readKnown()) {
            return false;
        }
        for (const LogSource &source : sources.all()) {
            if (m_stop || !bringUpToDate(source)) {
                return false;
            }
        }
        return std::ranges::all_of(m_known, [this](const KnownSource &known) {
            return known.isThere || (removeRows(known) && m_forget.with(known.number).run());
        });
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

    bool bringUpToDate(const LogSource &source) {
        auto known = std::ranges::find(m_known, source.mark().name,
                                       [](const KnownSource &k) { return k.mark.name; });
        if (known == m_known.end()) {
            const std::int64_t number = m_known.empty() ? 1 : m_known.back().number + 1;
            known = m_known.insert(known, {number, 0, m_dateFormat, {}});
        }
        known->isThere = true;
        const bool goesOn = known->dateFormat == m_dateFormat && source.continues(known->mark);
        if (goesOn && source.mark() == known->mark) {
            return true;
        }
        if (!goesOn) {
            if (!removeRows(*known)) {
                return false;
            }
            known->rows = 0;
        }
        return insertRows(source, goesOn ? known->mark.size : 0, *known) && note(source, *known);
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
        return target.file.string() + " is no database of events, and is left as it is";
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
        const bool works = update.run(sources);
        if (!works && update.readError() != 0) {
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
