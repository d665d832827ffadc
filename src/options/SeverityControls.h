#pragma once

#include "common/Severity.h"

#include <QList>

#include <array>

class QBoxLayout;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QSpinBox;

namespace quorbel {

class NumberStepper;

/// The controls that the options page has for one severity class.
struct SeverityControls {
    QComboBox *level;
    QCheckBox *removal;
    QLineEdit *time;
    QSpinBox *stepper;
    QComboBox *units;
    NumberStepper *removalTime;  ///< ties `time` and `stepper`
    QCheckBox *popupDisplay;
    QCheckBox *popupPlay;
};

using AllSeverityControls = std::array<SeverityControls, kSeverityClassCount>;

/// The places of the page that the controls are put into.
struct SeverityPlaces {
    QBoxLayout *levels;
    QBoxLayout *removal;
    QBoxLayout *popupDisplay;
    QBoxLayout *popupPlay;
};

/// Makes the controls of all nine classes, in their order.
AllSeverityControls makeSeverityControls(const SeverityPlaces &places);

}  // namespace quorbel
