#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace quorbel::load {

/// Whether the long forms of tests are wanted: tests/soak/run asks for them.
inline bool isSoak() {
    return std::getenv("QUORBEL_SOAK") != nullptr;  // NOLINT(concurrency-mt-unsafe)
}

template <typename T>
T soakOr(T inSoak, T otherwise) {
    return isSoak() ? inSoak : otherwise;
}

/// Prints a figure for people, and for tests/soak/run to collect.
inline void figure(const std::string &text) {
    std::printf("FIGURE %s\n", text.c_str());
    std::fflush(stdout);
}

}  // namespace quorbel::load
