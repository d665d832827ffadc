#pragma once

#include "core/AppState.h"
#include "options/OptionsGroup.h"
#include "options/SeverityControls.h"

namespace quorbel {

/// How events of each severity are rated.
class LevelOptions : public OptionsGroup {
    Q_OBJECT

public:
    /// The controls outlive the group.
    LevelOptions(const LevelControls &controls, QObject *parent);

    void showValues(const OptionsValues &values) override;
    void takeValues(OptionsValues &values) const override;
    [[nodiscard]] QWidgetList tabOrder() const override;

    /// Takes what all nine choosers show.
    void eventsSeverity();

private:
    LevelControls m_controls;
    SeverityLevels m_levels;
};

}  // namespace quorbel
