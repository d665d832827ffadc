#pragma once

#include <cstddef>

namespace quorbel {

/// Has the pages that lie within some memory made at once, rather than each when it is first
/// written to, which takes a third longer. For memory that will be written to, all of it; its
/// content stays. Where the system cannot, nothing happens.
void makePages(void *memory, std::size_t size);

}  // namespace quorbel
