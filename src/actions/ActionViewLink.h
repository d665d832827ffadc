#pragma once

#include "settings/LinkButton.h"

namespace quorbel {

/// A text of the actions page and its editor that opens a sheet.
class ActionViewLink : public LinkButton {
    Q_OBJECT

public:
    using LinkButton::LinkButton;
};

}  // namespace quorbel
