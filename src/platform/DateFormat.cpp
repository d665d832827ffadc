#include "platform/DateFormat.h"

#include "platform/Text.h"

#include <unicode/calendar.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <unordered_map>
#include <vector>

namespace quorbel {

namespace {

constexpr std::int64_t kDaySeconds = 86400;
constexpr std::int64_t kQuarterSeconds = 900;
constexpr std::int64_t kMinuteSeconds = 60;
constexpr std::int64_t kMillisPerSecond = 1000;
// Before 1970 local times are not always whole quarters of an hour from UTC.
constexpr std::int64_t kFirstBlockMoment = 0;
constexpr std::int64_t kLastBlockMoment = 253402128000;  // late in the year 9999
// The moments that ICU's calendars take are limited to these, in milliseconds; a day less at
// either end leaves room for the time zone.
constexpr double kEarliestMillis = -184303902528000000.0 + 86400000.0;
constexpr double kLatestMillis = 183882168921600000.0 - 86400000.0;

icu::UnicodeString patternFromSetting(std::string_view setting) {
    constexpr std::string_view kDayPeriod = "AM/PM";
    std::string pattern(setting.empty() ? DateFormat::kDefaultPattern : setting);
    for (std::size_t at = pattern.find(kDayPeriod); at != std::string::npos;
         at = pattern.find(kDayPeriod, at + 1)) {
        pattern.replace(at, kDayPeriod.size(), "a");
    }
    return icu::UnicodeString::fromUTF8(pattern);
}

bool hasUnterminatedQuote(const icu::UnicodeString &pattern) {
    bool quoted = false;
    for (std::int32_t at = 0; at < pattern.length(); ++at) {
        quoted ^= pattern.charAt(at) == u'\'';
    }
    return quoted;
}

double clampedMillis(double seconds) {
    return std::isnan(seconds)
               ? 0.0
               : std::clamp(seconds * kMillisPerSecond, kEarliestMillis, kLatestMillis);
}

// ICU reads a two-digit year as one in the hundred years that begin 80 years before the format was
// made. Taken once, so that all formats of the program read a text alike.
UDate centuryStart() {
    static const UDate kStart = [] {
        UErrorCode status = U_ZERO_ERROR;
        const icu::SimpleDateFormat format("yy", icu::Locale::getRoot(), status);
        return format.get2DigitYearStart(status);
    }();
    return kStart;
}

std::unique_ptr<icu::SimpleDateFormat> makeFormat(const icu::UnicodeString &pattern) {
    if (hasUnterminatedQuote(pattern)) {
        return nullptr;
    }
    UErrorCode status = U_ZERO_ERROR;
    auto format = std::make_unique<icu::SimpleDateFormat>(pattern, icu::Locale::getRoot(), status);
    if (U_FAILURE(status)) {
        return nullptr;
    }
    format->setLenient(false);
    format->set2DigitYearStart(centuryStart(), status);
    // Letters that mean nothing are found out only by using the pattern.
    const std::unique_ptr<icu::Calendar> epoch(format->getCalendar()->clone());
    epoch->setTime(0.0, status);
    icu::UnicodeString text;
    format->format(*epoch, text, nullptr, status);
    return U_SUCCESS(status) ? std::move(format) : nullptr;
}

// Each letter run of a pattern, or nothing when it holds more than plain fields kept apart by plain
// text: quotes, digits, names, or fields that touch.
std::optional<std::vector<icu::UnicodeString>> plainFields(const icu::UnicodeString &pattern) {
    constexpr std::u16string_view kLetters = u"yuMLdHkhKams";
    constexpr std::u16string_view kPlainText = u" /-.:,";
    constexpr std::int32_t kLongestNumber = 2;
    std::vector<icu::UnicodeString> fields;
    bool isInField = false;
    for (std::int32_t index = 0; index < pattern.length(); ++index) {
        const char16_t letter = pattern.charAt(index);
        if (kPlainText.find(letter) != std::u16string_view::npos) {
            isInField = false;
            continue;
        }
        if (!isInField) {
            fields.emplace_back();
        }
        isInField = true;
        icu::UnicodeString &field = fields.back();
        field.append(letter);
        const bool isYear = letter == u'y' || letter == u'u';
        if (kLetters.find(letter) == std::u16string_view::npos || field.charAt(0) != letter ||
            (!isYear && field.length() > kLongestNumber)) {
            return std::nullopt;
        }
    }
    return fields;
}

bool tellsMinuteBy(const icu::UnicodeString &pattern) {
    const auto fields = plainFields(pattern);
    if (!fields) {
        return false;
    }
    const auto has = [&fields](std::u16string_view letters) {
        return std::ranges::any_of(*fields, [letters](const icu::UnicodeString &field) {
            return letters.find(field.charAt(0)) != std::u16string_view::npos;
        });
    };
    return has(u"yu") && has(u"ML") && has(u"d") && has(u"m") &&
           (has(u"Hk") || (has(u"hK") && has(u"a")));
}

// What a pattern tells about the place of a moment within its quarter of an hour, where that can be
// said for sure: all other fields are the same throughout, and each field can be cut out of a text
// without regard to the others. When it tells the minute, the same holds for a whole day.
struct BlockRule {
    bool isKnown = false;
    bool tellsMinute = false;
    bool keepsMinutes = false;
    bool keepsSeconds = false;

    // How far the round trip of a block's offset lies behind that of the block's start.
    [[nodiscard]] std::int64_t kept(std::int64_t offset) const {
        return (keepsMinutes ? offset / kMinuteSeconds * kMinuteSeconds : 0) +
               (keepsSeconds ? offset % kMinuteSeconds : 0);
    }
};

BlockRule blockRule(const icu::UnicodeString &pattern) {
    // Left out: day periods such as noon, fractions and milliseconds, which change within a block;
    // zone names, which can change without the offset; quotes; digits.
    constexpr std::u16string_view kConstantLetters = u"GyYuMLQqwWdDFEecahHkK";
    constexpr std::u16string_view kPlainText = u" /-.:,";
    const auto at = [&pattern](std::int32_t index) {
        return index >= 0 && index < pattern.length() ? pattern.charAt(index) : u' ';
    };
    BlockRule rule{.isKnown = true, .tellsMinute = tellsMinuteBy(pattern)};
    for (std::int32_t index = 0; index < pattern.length(); ++index) {
        const char16_t letter = at(index);
        if (letter != u'm' && letter != u's') {
            rule.isKnown &= kConstantLetters.find(letter) != std::u16string_view::npos ||
                            kPlainText.find(letter) != std::u16string_view::npos;
            continue;
        }
        if (at(index - 1) == letter) {
            continue;  // counted with the field's first letter
        }
        bool &keeps = letter == u'm' ? rule.keepsMinutes : rule.keepsSeconds;
        const std::int32_t end = index + (at(index + 1) == letter ? 2 : 1);
        rule.isKnown &= !keeps && kPlainText.find(at(index - 1)) != std::u16string_view::npos &&
                        kPlainText.find(at(end)) != std::u16string_view::npos;
        keeps = true;
    }
    return rule;
}

template <typename Key, typename Item>
class BoundedMap {
public:
    template <typename Make>
    const Item &get(Key key, Make make) {
        const auto found = m_items.find(key);
        if (found != m_items.end()) {
            return found->second;
        }
        if (m_items.size() >= kCapacity) {
            m_items.clear();
        }
        return m_items.emplace(key, make()).first->second;
    }

private:
    static constexpr std::size_t kCapacity = 65536;
    std::unordered_map<Key, Item> m_items;
};

struct Block {
    bool isLinear = false;  // else each second must be converted for itself
    std::optional<std::int64_t> start;
};

// Blocks of one length, by number.
struct Blocks {
    explicit Blocks(std::int64_t seconds) : length(seconds) {}

    const std::int64_t length;
    std::int64_t lastNumber = std::numeric_limits<std::int64_t>::min();
    Block last;
    BoundedMap<std::int64_t, Block> all;
};

}  // namespace

struct DateFormat::Impl {
    explicit Impl(const icu::UnicodeString &pattern)
        : format(makeFormat(pattern)),
          rule(blockRule(pattern)),
          calendar(format ? format->getCalendar()->clone() : nullptr) {}

    [[nodiscard]] std::string render(double seconds) const;
    [[nodiscard]] std::optional<double> parse(std::string_view text) const;
    [[nodiscard]] std::optional<std::int64_t> convert(std::int64_t seconds) const;
    [[nodiscard]] std::optional<std::int64_t> roundTrip(std::int64_t seconds);
    [[nodiscard]] const Block &blockOf(std::int64_t seconds, Blocks &blocks) const;
    [[nodiscard]] Block makeBlock(std::int64_t number, std::int64_t length) const;
    [[nodiscard]] std::int64_t offset(std::int64_t seconds) const;

    std::unique_ptr<icu::SimpleDateFormat> format;  // null when the pattern is refused
    BlockRule rule;
    std::unique_ptr<icu::Calendar> calendar;
    Blocks days{kDaySeconds};
    Blocks quarters{kQuarterSeconds};
    BoundedMap<std::int64_t, std::optional<std::int64_t>> moments;
};

std::string DateFormat::Impl::render(double seconds) const {
    std::string text;
    if (format) {
        UErrorCode status = U_ZERO_ERROR;
        calendar->setTime(clampedMillis(seconds), status);
        icu::UnicodeString rendered;
        format->format(*calendar, rendered, nullptr, status);
        rendered.toUTF8String(text);
    }
    return text;
}

std::optional<double> DateFormat::Impl::parse(std::string_view text) const {
    if (!format || text.empty() || !isUtf8(text) ||
        text.size() > std::numeric_limits<std::int32_t>::max()) {
        return std::nullopt;
    }
    const icu::UnicodeString characters = icu::UnicodeString::fromUTF8(text);
    // This overload starts from a cleared calendar: fields that the pattern lacks are those of the
    // epoch, not of today.
    icu::ParsePosition position(0);
    const UDate moment = format->parse(characters, position);
    if (position.getIndex() != characters.length()) {
        return std::nullopt;
    }
    return moment / kMillisPerSecond;
}

std::optional<std::int64_t> DateFormat::Impl::convert(std::int64_t seconds) const {
    const std::optional<double> parsed = parse(render(static_cast<double>(seconds)));
    return parsed ? std::optional(static_cast<std::int64_t>(std::floor(*parsed))) : std::nullopt;
}

std::optional<std::int64_t> DateFormat::Impl::roundTrip(std::int64_t seconds) {
    if (rule.isKnown && seconds >= kFirstBlockMoment && seconds <= kLastBlockMoment) {
        for (Blocks *blocks : {&days, &quarters}) {
            if (blocks == &days && !rule.tellsMinute) {
                continue;
            }
            if (const Block &block = blockOf(seconds, *blocks); block.isLinear) {
                return block.start
                           ? std::optional(*block.start + rule.kept(seconds % blocks->length))
                           : std::nullopt;
            }
        }
    }
    return moments.get(seconds, [this, seconds] { return convert(seconds); });
}

const Block &DateFormat::Impl::blockOf(std::int64_t seconds, Blocks &blocks) const {
    const std::int64_t number = seconds / blocks.length;
    if (number != blocks.lastNumber) {
        blocks.last = blocks.all.get(
            number, [this, number, &blocks] { return makeBlock(number, blocks.length); });
        blocks.lastNumber = number;
    }
    return blocks.last;
}

Block DateFormat::Impl::makeBlock(std::int64_t number, std::int64_t length) const {
    const std::int64_t first = number * length;
    const std::int64_t last = first + length - 1;
    if (offset(first) != offset(last) || offset(first) % kQuarterSeconds != 0) {
        return {};
    }
    // A change of the clocks can begin or end inside the block, on either side of the conversion;
    // its other end tells.
    const std::optional<std::int64_t> start = convert(first);
    const std::optional<std::int64_t> end = convert(last);
    const std::optional<std::int64_t> expected =
        start ? std::optional(*start + rule.kept(length - 1)) : std::nullopt;
    return {.isLinear = end == expected, .start = start};
}

// How far the local time is ahead of UTC.
std::int64_t DateFormat::Impl::offset(std::int64_t seconds) const {
    std::int32_t raw = 0;
    std::int32_t saving = 0;
    UErrorCode status = U_ZERO_ERROR;
    calendar->getTimeZone().getOffset(static_cast<double>(seconds) * kMillisPerSecond, 0, raw,
                                      saving, status);
    return (raw + saving) / kMillisPerSecond;
}

DateFormat::DateFormat(std::string_view setting)
    : m_impl(std::make_unique<Impl>(patternFromSetting(setting))) {}

DateFormat::~DateFormat() = default;

std::string DateFormat::render(double seconds) const {
    return m_impl->render(seconds);
}

std::optional<double> DateFormat::parse(std::string_view text) const {
    return m_impl->parse(text);
}

std::optional<std::int64_t> DateFormat::roundTrip(std::int64_t seconds) const {
    return m_impl->roundTrip(seconds);
}

bool DateFormat::rendersAlike(std::int64_t one, std::int64_t other) const {
    const auto moment = roundTrip(one);
    if (moment != roundTrip(other)) {
        return false;  // the same text would read the same
    }
    return (moment && tellsMinute() && isPlain(one) && isPlain(other)) ||
           render(static_cast<double>(one)) == render(static_cast<double>(other));
}

bool DateFormat::tellsMinute() const {
    return m_impl->format && m_impl->rule.tellsMinute;
}

bool DateFormat::isPlain(std::int64_t seconds) {
    // Until 1972 a clock was put forward by 44 and a half minutes, which left half a minute over.
    constexpr std::int64_t kFirst = 3 * 365 * kDaySeconds + kDaySeconds;
    constexpr std::int64_t kNinetyNineYears = 99 * 365 * kDaySeconds;
    static const std::int64_t kLast =
        static_cast<std::int64_t>(centuryStart()) / kMillisPerSecond + kNinetyNineYears;
    return seconds >= kFirst && seconds <= kLast;
}

DateFormat::Span DateFormat::momentsInMinuteOf(std::int64_t seconds) const {
    // No clock is put back by more than a day, nor twice in a day.
    constexpr std::int64_t kMargin = kDaySeconds + 2 * kMinuteSeconds;
    const auto [least, most] =
        std::minmax({m_impl->offset(seconds - kMargin), m_impl->offset(seconds),
                     m_impl->offset(seconds + kMargin)});
    const std::int64_t around = most - least + kMinuteSeconds;
    return {seconds - around, seconds + around};
}

}  // namespace quorbel
