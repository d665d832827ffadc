#pragma once

#include <cstdint>

namespace quorbel {

/// Whether this user may look into the service's folder.
enum class LibraryAccess : std::uint8_t { kOpen, kClosed, kMissing };
LibraryAccess libraryAccess();

/// Whether there is a settings document, whoever may read it; true where that cannot be told.
bool hasSettingsDocument();

}  // namespace quorbel
