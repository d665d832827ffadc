#pragma once

namespace quorbel {

/// How large a distance must be at the program's font that is `pixels` at the standard one, of 10
/// points at 96 dots an inch. A smaller font makes nothing smaller.
[[nodiscard]] int sizedToFont(int pixels);

}  // namespace quorbel
