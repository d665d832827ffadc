#pragma once

#include "platform/UniqueFd.h"

#include <cstdint>

namespace quorbel::testing {

/// A TCP port of 127.0.0.1 that nobody listens on, and that the system gives to nobody who asks for
/// any. Throws std::runtime_error when there is none.
std::uint16_t freePort();

/// Listens on 127.0.0.1; 0 stands for any port. Throws std::runtime_error when it cannot.
UniqueFd listenOn(std::uint16_t port);
std::uint16_t portOf(const UniqueFd &listener);

/// A connection to a port of 127.0.0.1; not open when nobody listens.
UniqueFd connectTo(std::uint16_t port);

}  // namespace quorbel::testing
