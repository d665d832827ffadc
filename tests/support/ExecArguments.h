#pragma once

#include <string>
#include <vector>

namespace quorbel::testing {

/// The texts' addresses, ended by a null, as exec wants them. They last as long as the texts stay.
inline std::vector<char *> pointersTo(std::vector<std::string> &texts) {
    std::vector<char *> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string &text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace quorbel::testing
