#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

/// Renders moments as text and reads them back, by a pattern of Unicode TR 35, in the root locale
/// and the local time zone.
///
/// Moments are seconds since 1970-01-01 00:00 UTC. Not safe for use from two threads at once; each
/// thread makes its own.
class DateFormat {
public:
    /// The pattern that stands for an empty setting: a short date and a medium time.
    static constexpr std::string_view kDefaultPattern = "y-MM-dd HH:mm:ss";

    /// Takes a date format as the settings hold it: "AM/PM" stands for the day-period letter, and
    /// an empty text for kDefaultPattern. A pattern that ICU refuses renders every moment as empty
    /// text and reads none.
    explicit DateFormat(std::string_view setting);
    ~DateFormat();
    DateFormat(const DateFormat &) = delete;
    DateFormat &operator=(const DateFormat &) = delete;

    /// UTF-8. A moment beyond what the calendar can express (or no number at all) is rendered as
    /// the nearest one that it can.
    [[nodiscard]] std::string render(double seconds) const;

    /// The moment that a text names; nothing unless the whole text fits the pattern strictly.
    [[nodiscard]] std::optional<double> parse(std::string_view text) const;

    /// The same as parse(render(seconds)), at a small fraction of the cost: about one conversion
    /// for each day that is asked for, or quarter of an hour where !tellsMinute() or the clocks
    /// change.
    [[nodiscard]] std::optional<std::int64_t> roundTrip(std::int64_t seconds) const;

    /// Whether render() gives the same text for both, at the cost of roundTrip().
    [[nodiscard]] bool rendersAlike(std::int64_t one, std::int64_t other) const;

    /// Whether each text shows year, month, day, hour and minute, so that it tells plain moments of
    /// different minutes of the local clock apart. Reading a text back keeps the minute then.
    [[nodiscard]] bool tellsMinute() const;

    /// Whether the moment is from 1973 on and in a year that two digits name.
    static bool isPlain(std::int64_t seconds);

    struct Span {
        std::int64_t first;
        std::int64_t last;
    };
    /// Holds every moment at which the local clock shows the minute of `seconds`; a clock that is
    /// put back shows some minutes twice. Preconditions: tellsMinute(),
    /// isPlain(seconds).
    [[nodiscard]] Span momentsInMinuteOf(std::int64_t seconds) const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

}  // namespace quorbel
