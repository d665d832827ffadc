#pragma once

#include "platform/DateFormat.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quorbel {

/// Renders millions of moments as DateFormat does, at a small fraction of the cost: a few
/// conversions for each hour that is asked for, and none for its minutes and seconds.
class DateTexts {
public:
    /// Takes a date format as the settings hold it.
    explicit DateTexts(std::string_view setting);

    /// The same as DateFormat::render(seconds). Valid until the next call.
    std::string_view text(double seconds);

private:
    /// A run of two or more "m" or "s" in the pattern: a number padded to that many digits.
    struct Field {
        bool isMinute = false;
        std::size_t digits = 0;
    };
    /// A stretch of time. When it is even, nothing but minutes and seconds changes within.
    struct Block {
        bool isEven = false;
        std::string frame;              ///< its text with zeros in the fields
        std::vector<std::size_t> ends;  ///< where each field ends in it
    };
    /// All blocks of one length.
    struct Level {
        explicit Level(std::int64_t seconds) : length(seconds) {}

        std::int64_t length;
        std::unordered_map<std::int64_t, Block> blocks;
        std::int64_t lastNumber = -1;
        const Block *last = nullptr;
    };

    void findFields(std::string_view setting);
    const Block &blockFor(Level &level, std::int64_t moment);
    [[nodiscard]] Block makeBlock(std::int64_t first, std::int64_t last) const;
    void fillIn(const Block &block, std::int64_t moment, std::string &text) const;
    const std::string &convert(double seconds);

    DateFormat m_format;
    std::vector<Field> m_fields;
    std::unique_ptr<DateFormat> m_frames;  // null when the pattern shows more than is safe
    std::vector<Level> m_levels;
    double m_lastSeconds;
    std::string m_lastText;
    std::unordered_map<double, std::string> m_converted;
};

}  // namespace quorbel
