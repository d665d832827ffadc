#pragma once

#include "common/ActionThreshold.h"
#include "platform/Value.h"

#include <QWidget>

#include <cstdint>
#include <memory>

class QLineEdit;

namespace Ui {
class ThresholdForm;
}

namespace quorbel {

class NumberStepper;

/// The form of an action's threshold: whether there is one, how many matches within how many
/// minutes, in all or from one host; and a line that says what that means. What was entered comes
/// back when it is unticked and ticked again.
class ThresholdForm : public QWidget {
    Q_OBJECT

public:
    explicit ThresholdForm(QWidget *parent = nullptr);
    ~ThresholdForm() override;

    /// Shows what the record of an action says; an empty one for a new action.
    void showRecord(const Dictionary &record);
    /// Adds the key to a record that does not have it, where there is a threshold.
    void addTo(Dictionary &record) const;

private:
    void follow();
    [[nodiscard]] bool isWhole() const;
    [[nodiscard]] QString meaning() const;

    std::unique_ptr<Ui::ThresholdForm> ui;
    NumberStepper *m_matchesStepper;
    NumberStepper *m_minutesStepper;
    ActionThreshold m_threshold{};  ///< a number is 0 while its field is empty
    bool m_isStoredUnreadable = false;
};

}  // namespace quorbel
