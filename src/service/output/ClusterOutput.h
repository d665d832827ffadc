#pragma once

#include "service/output/ClusterDelivery.h"
#include "service/output/Output.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

namespace quorbel {

/// Sends what is stored to a cluster, in batches: as large as memory lets them be while there is
/// much to send, and otherwise one a second, because the cluster keeps each as files of its own at
/// first.
class ClusterOutput : public Output {
public:
    /// As Output's; `collector` is what this service is called in the cluster.
    ClusterOutput(LogStore &store, const std::filesystem::path &folder,
                  const ClusterSettings &settings, const std::string &collector);

protected:
    std::optional<std::string> deliver(const EventFeed::Piece &piece) override;
    [[nodiscard]] std::size_t pieceSize() const override { return std::size_t{8} << 20U; }

private:
    void waitForTurn(const EventFeed::Piece &piece);

    ClusterDelivery m_delivery;
    Clock::time_point m_last;  ///< when the last batch was handed over
};

}  // namespace quorbel
