#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace quorbel {

/// What the clocks show at one moment.
struct ClockReading {
    std::int64_t time = 0;      ///< of day: seconds since 1970
    std::int64_t running = 0;   ///< seconds since the machine was started, in sleep, too
    bool synchronised = false;  ///< the system says that the time of day comes from a good source
};

ClockReading readClocks();

/// Whether the time of day can be what the clock shows: a clock that jumps far ahead must not make
/// everything look old. It is believed
///
/// - when the system says that it is synchronised;
/// - when it has gone on from a time that was believed no further than the time that the machine
///   has been running since, by an hour at most; after a start, of which it is not known how long
///   the machine was off, by three days;
/// - when it has been running on for a week without being set, so that nothing waits for ever on a
///   machine that nobody synchronises.
///
/// The last time that was believed is kept in a file, so that a restart makes nobody forget. Not
/// for several threads at once.
class ClockTrust {
public:
    static constexpr std::int64_t kMostDrift = 3600;
    static constexpr std::int64_t kLongestSilence = std::int64_t{3} * 24 * 3600;
    static constexpr std::int64_t kLongestDoubt = std::int64_t{7} * 24 * 3600;

    /// `file` keeps what is known across starts.
    explicit ClockTrust(std::filesystem::path file);

    /// `newestStored` stands in for a time that was believed when there is none yet; nothing when
    /// nothing is stored.
    bool believes(const ClockReading &now, std::optional<std::int64_t> newestStored);
    /// By how many seconds the clock was ahead of what was to be expected when last asked.
    [[nodiscard]] std::int64_t ahead() const { return m_ahead; }

private:
    struct State {
        ClockReading believed;
        std::int64_t doubted = 0;  ///< for so many seconds of running in all
    };

    void load();
    void save();
    void believe(const ClockReading &now);
    bool outlastsDoubt(const ClockReading &now);
    [[nodiscard]] std::int64_t expected(const ClockReading &now) const;

    const std::filesystem::path m_file;
    std::optional<State> m_state;
    bool m_hasBelieved = false;          ///< since the program started
    std::optional<ClockReading> m_last;  ///< the same
    State m_saved;
    std::int64_t m_ahead = 0;
};

}  // namespace quorbel
