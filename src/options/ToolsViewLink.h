#pragma once

#include "settings/LinkButton.h"

namespace quorbel {

/// A text of the tools page that leads to another page.
class ToolsViewLink : public LinkButton {
    Q_OBJECT

public:
    using LinkButton::LinkButton;
};

}  // namespace quorbel
