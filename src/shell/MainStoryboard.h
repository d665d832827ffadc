#pragma once

namespace quorbel {

class AppDelegate;
class Storyboard;

/// Registers the controllers of the interface document "Main". Those made later refer to both
/// arguments, which outlive them.
void fillMainStoryboard(Storyboard &storyboard, AppDelegate &delegate);

}  // namespace quorbel
