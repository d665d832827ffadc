#pragma once

#include "platform/gui/Page.h"

namespace quorbel {

/// A page controller without behaviour of its own.
class ViewController final : public Page {
    Q_OBJECT

public:
    using Page::Page;
};

}  // namespace quorbel
