#pragma once

#include "options/OptionsGroup.h"
#include "options/OptionsValues.h"
#include "options/SeverityControls.h"

#include <cstddef>

namespace quorbel {

/// How long events of each severity are kept.
class RemovalOptions : public OptionsGroup {
    Q_OBJECT

public:
    /// The controls outlive the group.
    RemovalOptions(const AllRemovalControls &controls, QObject *parent);

    void showValues(const OptionsValues &values) override;
    /// The units are those chosen, whatever was shown.
    void takeValues(OptionsValues &values) const override;
    [[nodiscard]] QWidgetList tabOrder() const override;

    void eventsRemoval();
    /// Follows the check box of one severity. Without a sender it only brings the controls in line.
    void eventRemoval(std::size_t severity, const QObject *sender = nullptr);

private:
    void connectControls(std::size_t severity);

    AllRemovalControls m_controls;
    RemovalValues m_values;
};

}  // namespace quorbel
