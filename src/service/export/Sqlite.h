#pragma once

#include <sqlite3.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// An open SQLite database. Every operation returns whether it worked; once one has failed, code()
/// and message() tell why. For one thread.
class SqliteDatabase {
public:
    /// Opens the file, and makes an empty one when there is none. Check isOpen().
    explicit SqliteDatabase(const std::filesystem::path &file);

    [[nodiscard]] bool isOpen() const { return m_isOpen; }
    /// Makes a statement that is being run fail soon after `stop`, which must outlive the object,
    /// was set.
    void endWhen(const std::atomic<bool> &stop);
    bool execute(const char *sql);
    /// The first number that a query gives; nothing when it fails.
    std::optional<std::int64_t> number(const char *sql);

    [[nodiscard]] int code() const { return sqlite3_errcode(m_handle.get()); }
    [[nodiscard]] std::string message() const { return sqlite3_errmsg(m_handle.get()); }
    /// The operating system's error number behind the last failure; 0 when there was none.
    [[nodiscard]] int systemError() const { return sqlite3_system_errno(m_handle.get()); }
    [[nodiscard]] sqlite3 *handle() const { return m_handle.get(); }

private:
    struct Close {
        void operator()(sqlite3 *handle) const { sqlite3_close_v2(handle); }
    };

    std::unique_ptr<sqlite3, Close> m_handle;
    bool m_isOpen = false;
};

/// A statement that is run again and again with other values.
class SqliteStatement {
public:
    SqliteStatement(const SqliteDatabase &database, const char *sql);

    /// Gives the parameters their values, in their order. Texts must outlive the next step().
    template <typename... Values>
    SqliteStatement &with(const Values &...values) {
        sqlite3_reset(m_handle.get());
        int index = 0;
        (bind(++index, values), ...);
        return *this;
    }
    /// Whether there is a (further) row; false at the end and on failure, see hasFailed().
    bool step();
    /// step(), for a statement that gives no rows. Returns whether it worked.
    bool run();
    [[nodiscard]] bool hasFailed() const { return m_hasFailed; }

    [[nodiscard]] std::int64_t integer(int column) const {
        return sqlite3_column_int64(m_handle.get(), column);
    }
    [[nodiscard]] std::string text(int column) const;

private:
    void bind(int index, std::int64_t value) { sqlite3_bind_int64(m_handle.get(), index, value); }
    void bind(int index, std::string_view text);

    struct Finalize {
        void operator()(sqlite3_stmt *handle) const { sqlite3_finalize(handle); }
    };

    std::unique_ptr<sqlite3_stmt, Finalize> m_handle;
    bool m_hasFailed = false;
};

}  // namespace quorbel
