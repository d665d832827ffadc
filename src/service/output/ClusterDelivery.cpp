#include "service/output/ClusterDelivery.h"

#include "cluster/ClusterSchema.h"

namespace quorbel {

ClusterDelivery::ClusterDelivery(const ClusterSettings &settings, const std::string &collector,
                                 std::chrono::milliseconds toInsert)
    : m_filter(settings.filter),
      m_statement(clusterInsert({settings.database, settings.table})),
      m_client({.servers = settings.servers,
                .user = settings.user,
                .passwordFile = settings.passwordFile,
                .authorityFile = settings.authorityFile,
                .toInsert = toInsert}),
      m_rows(collector) {}

std::optional<std::string> ClusterDelivery::deliver(const EventFeed::Piece &piece,
                                                    const std::atomic<bool> &stop) {
    m_rows.clear();
    forEachEvent(piece, [this](std::uint64_t number, const LogLine &event) {
        if (m_filter.isEmpty() || m_filter.matches(event)) {
            m_rows.add(number, event);
        }
    });
    if (m_rows.count() == 0) {
        return std::nullopt;
    }
    const std::string problem = m_client.insert(m_statement, m_rows.bytes(), stop);
    return problem.empty() ? std::nullopt : std::optional(problem);
}

}  // namespace quorbel
