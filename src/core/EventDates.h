#pragma once

#include "common/Severity.h"
#include "core/AppState.h"
#include "core/EventChunk.h"
#include "platform/DateFormat.h"

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// What showing the event list does to each event's date and image, put off until somebody looks at
/// the event.
///
/// Each showing renders the dates that are still raw, and reads every date that is rendered in
/// another format than the one in force in its own format and renders it anew; then it picks the
/// image. A date that came as text has no format of its own: it is read in the old one, when the
/// format was changed. Done to a million rows at once that is a window frozen for half a minute. So
/// a showing is only noted here, and an event is brought up to date (settled) when one of its texts
/// is asked for, with the same result as if each showing had walked all rows.
class EventDates {
public:
    using FormatId = std::uint8_t;

    /// Notes one showing with the formats and levels now in force.
    void noteShowing(const AppState &state);
    /// How many showings were noted.
    [[nodiscard]] std::size_t showings() const;

    /// Applies the showings that the record has not seen. `text` is the date's text where it is
    /// kept as one; it is taken away when the date becomes a rendered one.
    void settle(EventRecord &record, std::uint8_t severityClass,
                std::optional<std::string> &text) const {
        settleUpTo(showings(), record, severityClass, text);
    }
    /// The same without the showings after the first `showings`.
    void settleUpTo(std::size_t showings, EventRecord &record, std::uint8_t severityClass,
                    std::optional<std::string> &text) const;

    /// What a showing does.
    struct Showing {
        FormatId oldFormat;
        FormatId newFormat;
        std::array<std::int8_t, kSeverityClassCount> levels;  ///< -1 for one without an image
        bool operator==(const Showing &) const = default;
    };
    /// With the formats and levels now in force.
    Showing showingFor(const AppState &state);
    /// Renders a date, if there is one, as fresh from the service, in the format of a showing that
    /// is in force now, and picks the image.
    void showAtOnce(EventRecord &record, std::uint8_t severityClass, const Showing &showing,
                    bool hasDate) const;

    /// Puts a date into a new record of a chunk as it came. True, and noted in the record, when its
    /// text has to be kept beside it.
    static bool setAsItCame(EventChunk &chunk, EventRecord &record,
                            const std::optional<std::string_view> &text);

    /// The whole second of a number, within what a date can be rendered from.
    static std::int64_t wholeSeconds(double seconds);

    /// The id of a date format as the settings hold it.
    FormatId formatId(std::string_view setting);
    [[nodiscard]] const DateFormat &format(FormatId id) const { return *m_formats[id - 1].format; }
    [[nodiscard]] std::string_view setting(FormatId id) const { return m_formats[id - 1].setting; }

    /// The minute of the local clock in which a date's moment is, as a number that no showing
    /// changes. Nothing when that cannot be said: of text, of odd moments, and once there was a
    /// format that does not tell the minute. Precondition: formatId() was called.
    [[nodiscard]] std::optional<std::int64_t> minuteOf(const EventRecord &record) const;
    [[nodiscard]] std::optional<std::int64_t> minuteOf(std::int64_t seconds) const;
    /// Whether all formats so far tell the minute.
    [[nodiscard]] bool tellsMinutes() const { return m_tellsMinutes; }
    /// The moments that minuteOf() may give this one's minute. Precondition: it gives one.
    [[nodiscard]] DateFormat::Span momentsInMinuteOf(std::int64_t seconds) const {
        return m_minutes->momentsInMinuteOf(seconds);
    }

    /// Whether noteShowing() or formatId() may run out of numbers. Then every record has to be
    /// settled, its `showings` set to 0, and startOver() called.
    [[nodiscard]] bool isFull() const;
    /// Which values of EventRecord::format occur.
    using FormatsInUse = std::bitset<EventRecord::kTextDate + 1>;
    /// Forgets all showings and the formats that are not in use.
    void startOver(const FormatsInUse &inUse);

private:
    struct Run {  // equal showings one after the other
        Showing showing;
        std::size_t end;  // showings up to and with the last of them
    };
    struct NamedFormat {
        std::string setting;
        std::unique_ptr<DateFormat> format;  // null when the place is free
        [[nodiscard]] bool isFree() const { return !format; }
    };

    void apply(const Showing &showing, EventRecord &record, std::optional<std::string> &text) const;
    [[nodiscard]] std::optional<std::int64_t> momentRead(
        const Showing &showing, const EventRecord &record,
        const std::optional<std::string> &text) const;
    static void pickImage(const Showing &showing, EventRecord &record, std::uint8_t severityClass);

    std::vector<NamedFormat> m_formats;
    bool m_tellsMinutes = true;
    std::unique_ptr<DateFormat> m_minutes;  // made with the first format
    std::vector<Run> m_runs;
};

}  // namespace quorbel
