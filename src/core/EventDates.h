#pragma once

#include "core/AppState.h"
#include "core/EventChunk.h"
#include "core/Severity.h"
#include "platform/DateFormat.h"

#include <array>
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
/// Each showing renders the dates that are still raw and, when the date format was changed, reads
/// every other date in the old format and renders it in the new one; then it picks the image. Done
/// to a million rows at once that is a window frozen for half a minute. So a showing is only noted
/// here, and an event is brought up to date (settled) when one of its texts is asked for, with the
/// same result as if each showing had walked all rows.
class EventDates {
public:
    using FormatId = std::uint8_t;

    /// Notes one showing with the formats and levels now in force.
    void noteShowing(const AppState &state);
    /// How many showings were noted.
    [[nodiscard]] std::size_t showings() const;
    /// Whether the last showing re-rendered dates that were rendered before.
    [[nodiscard]] bool lastShowingReRendered() const;

    /// Applies the showings that the record has not seen. `text` is the date's text where it is
    /// kept as one; it is taken away when the date becomes a rendered one.
    void settle(EventRecord &record, std::uint8_t severityClass, std::optional<std::string> &text);

    /// Renders a date, if there is one, as fresh from the service, in the format now in force, and
    /// picks the image.
    void showAtOnce(EventRecord &record, std::uint8_t severityClass, const AppState &state,
                    bool hasDate);

    /// The id of a date format as the settings hold it.
    FormatId formatId(std::string_view setting);
    [[nodiscard]] const DateFormat &format(FormatId id) const { return *m_formats[id - 1].format; }

    /// Whether noteShowing() or formatId() may run out of numbers. Then every record has to be
    /// settled, rendered dates turned to text, and reset() called.
    [[nodiscard]] bool isFull() const;
    void reset();

private:
    struct Showing {
        FormatId oldFormat;
        FormatId newFormat;
        std::array<std::int8_t, kSeverityClassCount> levels;  // -1 for one without an image
        bool operator==(const Showing &) const = default;
    };
    struct Run {  // equal showings one after the other
        Showing showing;
        std::size_t end;  // showings up to and with the last of them
    };
    struct NamedFormat {
        std::string setting;
        std::unique_ptr<DateFormat> format;
    };

    Showing showingFor(const AppState &state);
    void apply(const Showing &showing, std::size_t times, EventRecord &record,
               std::optional<std::string> &text) const;
    void applyOnce(const Showing &showing, EventRecord &record,
                   std::optional<std::string> &text) const;
    static void pickImage(const Showing &showing, EventRecord &record, std::uint8_t severityClass);

    std::vector<NamedFormat> m_formats;
    std::vector<Run> m_runs;
};

}  // namespace quorbel
