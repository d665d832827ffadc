#pragma once

#include "core/HostWatch.h"

namespace quorbel {

/// The hosts that the user does not expect any more, as the window remembers them across starts
/// (see remember()).
HostWatch::Names rememberedRetiredHosts();
void rememberRetiredHosts(const HostWatch::Names &names);

}  // namespace quorbel
