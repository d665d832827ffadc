#pragma once

#include "core/PageLinks.h"

namespace quorbel::testing {

/// A home page that is never shown.
class NoHomePage : public HomePageLink {
public:
    [[nodiscard]] bool isOnScreen() const override { return false; }
    void setEventsStatus() override {}
    [[nodiscard]] int severityStatus() const override { return 0; }
};

}  // namespace quorbel::testing
