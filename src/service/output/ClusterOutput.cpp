#include "service/output/ClusterOutput.h"

namespace quorbel {

ClusterOutput::ClusterOutput(LogStore &store, const std::filesystem::path &folder,
                             const ClusterSettings &settings, const std::string &collector)
    : Output(store, folder, "cluster",
             {.name = settings.name, .kept = true, .history = settings.history}),
      m_delivery(settings, collector) {}

std::optional<std::string> ClusterOutput::deliver(const EventFeed::Piece &piece) {
    waitForTurn(piece);
    auto problem = m_delivery.deliver(piece, stopping());
    m_last = Clock::now();
    if (!problem) {
        noteSent(m_delivery.lastCount());
    }
    return problem;
}

void ClusterOutput::waitForTurn(const EventFeed::Piece &piece) {
    constexpr std::chrono::seconds kInterval{1};
    const auto wait =
        std::chrono::ceil<std::chrono::milliseconds>(m_last + kInterval - Clock::now());
    if (piece.lines.size() < pieceSize() / 2 && wait.count() > 0) {
        pause(wait);
    }
}

}  // namespace quorbel
