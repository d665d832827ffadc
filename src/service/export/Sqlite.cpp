#include "service/export/Sqlite.h"

namespace quorbel {

SqliteDatabase::SqliteDatabase(const std::filesystem::path &file) {
    constexpr int kBusyMilliseconds = 5000;
    sqlite3 *handle = nullptr;
    m_isOpen = sqlite3_open_v2(file.c_str(), &handle,
                               SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOFOLLOW |
                                   SQLITE_OPEN_NOMUTEX,
                               nullptr) == SQLITE_OK;
    // There is one even after a failure, which it explains.
    m_handle.reset(handle);
    sqlite3_busy_timeout(handle, kBusyMilliseconds);
}

void SqliteDatabase::endWhen(const std::atomic<bool> &stop) {
    constexpr int kSteps = 10'000;
    const auto isTime = [](void *flag) {
        return static_cast<const std::atomic<bool> *>(flag)->load() ? 1 : 0;
    };
    sqlite3_progress_handler(m_handle.get(), kSteps, isTime,
                             const_cast<std::atomic<bool> *>(&stop));
}

bool SqliteDatabase::execute(const char *sql) {
    return sqlite3_exec(m_handle.get(), sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

std::optional<std::int64_t> SqliteDatabase::number(const char *sql) {
    SqliteStatement statement(*this, sql);
    return statement.step() ? std::optional(statement.integer(0)) : std::nullopt;
}

SqliteStatement::SqliteStatement(const SqliteDatabase &database, const char *sql) {
    sqlite3_stmt *handle = nullptr;
    m_hasFailed = sqlite3_prepare_v2(database.handle(), sql, -1, &handle, nullptr) != SQLITE_OK;
    m_handle.reset(handle);
}

bool SqliteStatement::step() {
    const int code = m_hasFailed ? SQLITE_ERROR : sqlite3_step(m_handle.get());
    m_hasFailed = code != SQLITE_ROW && code != SQLITE_DONE;
    return code == SQLITE_ROW;
}

bool SqliteStatement::run() {
    step();
    return !m_hasFailed;
}

std::string SqliteStatement::text(int column) const {
    const unsigned char *text = sqlite3_column_text(m_handle.get(), column);
    const auto length = static_cast<std::size_t>(sqlite3_column_bytes(m_handle.get(), column));
    return text == nullptr ? std::string() : std::string(text, text + length);
}

void SqliteStatement::bind(int index, std::string_view text) {
    sqlite3_bind_text64(m_handle.get(), index, text.data(), text.size(), SQLITE_STATIC,
                        SQLITE_UTF8);
}

}  // namespace quorbel
