#pragma once

#include "cluster/ClickHouse.h"
#include "cluster/ClusterQuery.h"
#include "cluster/ClusterRows.h"
#include "cluster/ClusterSchema.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace quorbel::testing {

/// Makes the table and its view on a server, as an administrator does.
inline std::string applySchema(const ClickHouse &server, const TemporaryFolder &folder,
                               const std::string &sql) {
    return server.runClient(folder.write("schema.sql", sql), {"--multiquery"});
}

/// One server with the table, for all tests of a suite; without it, each is skipped.
class ClusterFixture : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (ClickHouse::isThere()) {
            s_folder = std::make_unique<TemporaryFolder>();
            s_server = std::make_unique<ClickHouse>(s_folder->path() / "server");
            ASSERT_TRUE(s_server->start());
            ASSERT_EQ(applySchema(*s_server, *s_folder, clusterSchema({}, {"127.0.0.1"})), "");
        }
    }
    static void TearDownTestSuite() {
        s_server.reset();
        s_folder.reset();
    }
    void SetUp() override {
        if (!s_server) {
            GTEST_SKIP() << ClickHouse::kMissing;
        }
        ASSERT_EQ(ask("TRUNCATE TABLE quorbel.events"), "");
    }

    static const ClickHouse &server() { return *s_server; }
    static std::string ask(const std::string &sql) { return s_server->ask(sql); }

private:
    static inline std::unique_ptr<TemporaryFolder> s_folder;
    static inline std::unique_ptr<ClickHouse> s_server;
};

inline LogLine eventOf(std::string_view date, std::string_view priority, std::string_view host,
                       std::string_view message) {
    LogLine event;
    event.date = date;
    event.priority = priority;
    event.host = host;
    event.message = message;
    return event;
}

inline std::string insertRows(const ClusterConnection &connection, const ClusterRows &rows,
                              const ClusterPlace &place = {}) {
    static const std::atomic<bool> kGoOn = false;
    return ClusterClient(connection).insert(clusterInsert(place), rows.bytes(), kGoOn);
}

}  // namespace quorbel::testing
