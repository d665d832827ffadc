#pragma once

#include "common/Severity.h"

#include <array>

class QBoxLayout;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QSpinBox;

namespace quorbel {

class NumberStepper;

// The controls that the options page has for each severity class, in the classes' order. They are
// made at the end of a layout of the page.

/// Choosers of a rating.
using LevelControls = std::array<QComboBox *, kSeverityClassCount>;
LevelControls makeLevelControls(QBoxLayout &place);

/// How long events are kept.
struct RemovalControls {
    QCheckBox *removal;
    QLineEdit *time;
    QSpinBox *stepper;
    QComboBox *units;
    NumberStepper *removalTime;  ///< ties `time` and `stepper`
};
using AllRemovalControls = std::array<RemovalControls, kSeverityClassCount>;
AllRemovalControls makeRemovalControls(QBoxLayout &place);

/// Check boxes that bear the severities' labels.
using BoxControls = std::array<QCheckBox *, kSeverityClassCount>;
BoxControls makeDisplayControls(QBoxLayout &place);
BoxControls makePlayControls(QBoxLayout &place);

}  // namespace quorbel
