#include "reports/DateTexts.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quorbel {

namespace {

constexpr char kFieldMark = '\x01';
constexpr std::string_view kDayPeriod = "AM/PM";
// Whole hours go by evenly in most time zones, quarters of an hour in nearly all since 1970.
constexpr std::int64_t kHour = 3600;
constexpr std::int64_t kQuarter = 900;
constexpr double kFirstMoment = 0;
constexpr double kEndMoment = 253402128000;  // late in the year 9999
constexpr std::size_t kMostHeld = 65536;

/// What can stand in a pattern whose texts differ only in minutes and seconds within an hour. Left
/// out are fractions, day periods such as noon, and names of zones, which change by other rules.
constexpr std::string_view kEvenCharacters = "GyYuMLQqwWdDFEecahHkK /-.:,";

}  // namespace

DateTexts::DateTexts(std::string_view setting)
    : m_format(setting),
      m_levels{Level(kHour), Level(kQuarter)},
      m_lastSeconds(std::numeric_limits<double>::quiet_NaN()) {
    findFields(setting.empty() ? DateFormat::kDefaultPattern : setting);
}

void DateTexts::findFields(std::string_view setting) {
    std::string frame;
    for (std::size_t at = 0; at < setting.size();) {
        const char letter = setting[at];
        if (letter == 'm' || letter == 's') {
            const std::size_t end = std::min(setting.find_first_not_of(letter, at), setting.size());
            if (end - at < 2) {
                return;  // not always as long
            }
            m_fields.push_back({letter == 'm', end - at});
            frame += kFieldMark;
            at = end;
        } else if (setting.substr(at).starts_with(kDayPeriod)) {
            frame += 'a';
            at += kDayPeriod.size();
        } else if (kEvenCharacters.find(letter) != std::string_view::npos) {
            frame += letter;
            ++at;
        } else {
            return;
        }
    }
    m_frames = std::make_unique<DateFormat>(frame);
}

std::string_view DateTexts::text(double seconds) {
    if (seconds == m_lastSeconds) {
        return m_lastText;
    }
    if (m_frames && seconds >= kFirstMoment && seconds < kEndMoment) {
        const auto moment = static_cast<std::int64_t>(std::floor(seconds));
        for (Level &level : m_levels) {
            if (const Block &block = blockFor(level, moment); block.isEven) {
                m_lastSeconds = seconds;
                fillIn(block, moment, m_lastText);
                return m_lastText;
            }
        }
    }
    return convert(seconds);
}

const DateTexts::Block &DateTexts::blockFor(Level &level, std::int64_t moment) {
    const std::int64_t number = moment / level.length;
    if (number == level.lastNumber) {
        return *level.last;
    }
    auto found = level.blocks.find(number);
    if (found == level.blocks.end()) {
        if (level.blocks.size() >= kMostHeld) {
            level.blocks.clear();
        }
        const std::int64_t first = number * level.length;
        found = level.blocks.emplace(number, makeBlock(first, first + level.length - 1)).first;
    }
    level.lastNumber = number;
    level.last = &found->second;
    return found->second;
}

DateTexts::Block DateTexts::makeBlock(std::int64_t first, std::int64_t last) const {
    Block block;
    auto field = m_fields.begin();
    for (const char character : m_frames->render(static_cast<double>(first))) {
        if (character == kFieldMark) {
            block.frame.append(field->digits, '0');
            block.ends.push_back(block.frame.size());
            ++field;
        } else {
            block.frame += character;
        }
    }
    // A change of the clocks within the block, and local time that does not begin with the block,
    // show at one of its ends.
    std::string text;
    fillIn(block, first, text);
    if (text == m_format.render(static_cast<double>(first))) {
        fillIn(block, last, text);
        block.isEven = text == m_format.render(static_cast<double>(last));
    }
    return block;
}

void DateTexts::fillIn(const Block &block, std::int64_t moment, std::string &text) const {
    text = block.frame;
    for (std::size_t i = 0; i < block.ends.size(); ++i) {
        const std::int64_t number = m_fields[i].isMinute ? moment / 60 % 60 : moment % 60;
        text[block.ends[i] - 2] = static_cast<char>('0' + number / 10);
        text[block.ends[i] - 1] = static_cast<char>('0' + number % 10);
    }
}

const std::string &DateTexts::convert(double seconds) {
    const auto known = m_converted.find(seconds);
    if (known != m_converted.end()) {
        return known->second;
    }
    if (m_converted.size() >= kMostHeld) {
        m_converted.clear();
    }
    return m_converted.emplace(seconds, m_format.render(seconds)).first->second;
}

}  // namespace quorbel
