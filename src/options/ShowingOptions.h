#pragma once

#include "options/OptionsGroup.h"

#include <string>

class QComboBox;
class QRadioButton;

namespace quorbel {

class NoteLabel;

/// How hosts and dates are shown.
class ShowingOptions : public OptionsGroup {
    Q_OBJECT

public:
    struct Controls {
        QRadioButton *hostsDisplayIP;
        QRadioButton *hostsDisplayName;
        QRadioButton *localeDateFormat;
        QRadioButton *definedDateFormat;
        QComboBox *userDateFormat;
        QComboBox *userTimeFormat;
        NoteLabel *dateExample;  ///< how a date looks in the format that is chosen
    };

    /// The controls outlive the group.
    ShowingOptions(const Controls &controls, QObject *parent);

    void showValues(const OptionsValues &values) override;
    void takeValues(OptionsValues &values) const override;
    [[nodiscard]] QWidgetList tabOrder() const override;

    void hostsDisplay();
    /// Offers the first date and the first time format when a format of one's own was chosen.
    void dateFormat();

private:
    void showDateFormat();
    void showExample();
    [[nodiscard]] std::string chosenDateFormat() const;

    Controls m;
    std::string m_dateFormat;  ///< as it was read
};

}  // namespace quorbel
