#pragma once

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorbel::testing {

inline constexpr std::uint32_t kSampleRate = 8000;

/// An unsigned number as bytes.
inline std::string bytes(std::uint64_t number, int count, std::endian order) {
    std::string result;
    for (int i = 0; i < count; ++i) {
        const int shift = 8 * (order == std::endian::little ? i : count - 1 - i);
        result.push_back(static_cast<char>(number >> shift & 0xFF));
    }
    return result;
}

/// A soft tone, 16 bit, one channel.
inline std::string tone(double seconds, std::endian order) {
    std::string samples;
    const int count = static_cast<int>(seconds * kSampleRate);
    for (int i = 0; i < count; ++i) {
        const auto sample = static_cast<std::int16_t>(500 * std::sin(i * 0.35));
        samples += bytes(static_cast<std::uint16_t>(sample), 2, order);
    }
    return samples;
}

/// A WAVE file.
inline std::string wav(double seconds) {
    const auto number = [](std::uint64_t value, int count) {
        return bytes(value, count, std::endian::little);
    };
    const std::string samples = tone(seconds, std::endian::little);
    const std::string format = number(1, 2) + number(1, 2) + number(kSampleRate, 4) +
                               number(2 * kSampleRate, 4) + number(2, 2) + number(16, 2);
    return "RIFF" + number(36 + samples.size(), 4) + "WAVEfmt " + number(16, 4) + format + "data" +
           number(samples.size(), 4) + samples;
}

/// An AIFF file. Its sample rate is an 80-bit floating-point number: 8000 = 1.953125 * 2^12.
inline std::string aiff(double seconds) {
    const auto number = [](std::uint64_t value, int count) {
        return bytes(value, count, std::endian::big);
    };
    const std::string samples = tone(seconds, std::endian::big);
    const std::string common = number(1, 2) + number(samples.size() / 2, 4) + number(16, 2) +
                               number(0x3FFF + 12, 2) + number(0xFA00'0000'0000'0000, 8);
    const std::string sound = number(0, 8) + samples;
    const std::string chunks =
        "COMM" + number(common.size(), 4) + common + "SSND" + number(sound.size(), 4) + sound;
    return "FORM" + number(4 + chunks.size(), 4) + "AIFF" + chunks;
}

}  // namespace quorbel::testing
