#pragma once

#include "platform/UniqueFd.h"

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace quorbel {

// Opening, reading and writing by descriptor. errno says why something failed.

/// Opens a regular file with the flags of open(2); `mode` is for O_CREAT. Not open, with EINVAL,
/// when the name stands for anything else: a FIFO or a device would keep whoever opens, reads or
/// writes it waiting, or do what it likes.
UniqueFd openRegular(const std::filesystem::path &path, int flags, mode_t mode = 0);

/// As read(2), begun anew when a signal interrupts it.
ssize_t readSome(int fd, char *buffer, std::size_t room);

/// All that is left to read; nothing when reading fails.
std::optional<std::string> readToEnd(int fd);

/// How many of the bytes could be written: all of them, or as many as there were before an error.
std::size_t writeFully(int fd, std::string_view bytes);

}  // namespace quorbel
