#pragma once

#include "options/OptionsGroup.h"
#include "options/SeverityControls.h"

#include <cstddef>
#include <cstdint>

class QLineEdit;
class QSpinBox;

namespace quorbel {

class NumberStepper;
class SeverityBoxes;

/// Which severities raise a popup, and how long it stays.
class PopupOptions : public OptionsGroup {
    Q_OBJECT

public:
    struct Controls {
        QCheckBox *popupEventsDisplay;
        QLineEdit *popupEventsTime;
        QSpinBox *popupEventsStepper;
        BoxControls boxes;
    };

    /// The controls outlive the group.
    PopupOptions(const Controls &controls, QObject *parent);

    void showValues(const OptionsValues &values) override;
    void takeValues(OptionsValues &values) const override;
    [[nodiscard]] QWidgetList tabOrder() const override;

    void popupTimeout();
    /// Follows `popupEventsDisplay`. Without a sender it only brings the controls in line.
    void popupEvents(const QObject *sender = nullptr);
    void popupEventsDisplay(std::size_t severity);

private:
    Controls m;
    NumberStepper *m_popupTime;  ///< ties the field and its stepper
    SeverityBoxes *m_boxes;
    std::int64_t m_iPopupEvents = 0;
};

}  // namespace quorbel
