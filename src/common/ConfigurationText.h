#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// "Key=Value", without the blanks around both.
struct ConfigurationEntry {
    std::size_t line;  ///< from 1 on
    std::string_view key;
    std::string_view value;
};

/// "[Kind]" or "[Kind "name"]", with what follows up to the next one.
struct ConfigurationSection {
    std::size_t line;
    std::string_view kind;
    std::string_view name;  ///< empty: none
    std::vector<ConfigurationEntry> entries;
};

/// What is wrong with a line of it.
struct ConfigurationMistake {
    std::size_t line;
    std::string text;
};

/// The form of a configuration file, whatever it means: sections and their entries, in the order of
/// their lines. Lines end with LF or CR LF; those that are empty, or begin with "#" or ";", do not
/// count. All are views of the bytes.
struct ConfigurationText {
    static constexpr std::size_t kLongestLine = 4096;  ///< bytes
    static constexpr std::size_t kMostMistakes = 100;

    /// `bytes` may be anything: what is not understood is a mistake, and passed over. After so many
    /// mistakes nothing more is read.
    explicit ConfigurationText(std::string_view bytes);

    std::vector<ConfigurationSection> sections;
    std::vector<ConfigurationMistake> mistakes;

private:
    void readLine(std::size_t number, std::string_view line);
    void readSection(std::size_t number, std::string_view line);
    void readEntry(std::size_t number, std::string_view line);
};

}  // namespace quorbel
