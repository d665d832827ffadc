#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

namespace quorbel::bench {

/// One line of a log as a busy network writes it, about 103 bytes long; the same for the same
/// number. Numbers that follow one another are `spacing` seconds apart.
std::string sampleLine(std::uint64_t number, double spacing);

/// Writes `lines` of them into one file and returns its size in bytes.
std::size_t writeSampleLog(const std::filesystem::path &file, std::uint64_t lines, double spacing);

}  // namespace quorbel::bench
