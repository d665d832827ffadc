#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// An option of a command, in the way of getopt_long(3).
struct Option {
    /// Returns what is wrong with the value, for the end of a sentence; empty when nothing is.
    using Take = std::function<std::string(std::string_view value)>;

    const char *name;
    char letter;    ///< 0 for none
    bool hasValue;  ///< else `take` gets an empty one
    Take take;
};

/// An option that only says yes.
inline Option flag(const char *name, char letter, bool &isSet) {
    return {name, letter, false, [&isSet](std::string_view) {
                isSet = true;
                return std::string();
            }};
}

/// Reads a command's arguments: `values[0]` is its name. Options may stand anywhere; what is none
/// is returned. Nothing when something is wrong, which was said then.
std::optional<std::vector<std::string>> readOptions(int count, char **values,
                                                    const std::vector<Option> &options);

/// For a command that takes nothing but options: says so when there are `others`, and gives false.
bool expectNone(const std::vector<std::string> &others);

}  // namespace quorbel
