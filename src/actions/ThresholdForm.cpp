#include "actions/ThresholdForm.h"

#include "platform/gui/QtText.h"
#include "settings/NumberStepper.h"
#include "ui_ThresholdForm.h"

namespace quorbel {

namespace {

// What is offered to whoever ticks the box.
constexpr ActionThreshold kOffered{.matches = 5, .minutes = 10, .perHost = false};

QString minutesText(std::int64_t minutes) {
    return minutes == 1 ? ThresholdForm::tr("1 minute")
                        : ThresholdForm::tr("%1 minutes", nullptr, pluralNumber(minutes))
                              .arg(countText(minutes));
}

}  // namespace

ThresholdForm::ThresholdForm(QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::ThresholdForm>()) {
    ui->setupUi(this);
    m_matchesStepper = new NumberStepper(ui->thresholdMatches, ui->thresholdMatchesStepper, 1,
                                         ActionThreshold::kMostMatches, this);
    m_minutesStepper = new NumberStepper(ui->thresholdMinutes, ui->thresholdMinutesStepper, 1,
                                         ActionThreshold::kMostMinutes, this);
    connect(m_matchesStepper, &NumberStepper::edited, this, [this](std::int64_t value) {
        m_threshold.matches = value;
        follow();
    });
    connect(m_minutesStepper, &NumberStepper::edited, this, [this](std::int64_t value) {
        m_threshold.minutes = value;
        follow();
    });
    connect(ui->thresholdOn, &QAbstractButton::toggled, this, &ThresholdForm::follow);
    connect(ui->thresholdHosts, &QComboBox::currentIndexChanged, this, &ThresholdForm::follow);
    // The sheet makes room for what it says now, the longest of what it says when all is well.
    showRecord(
        {{std::string(kThresholdKey),
          thresholdRecord({ActionThreshold::kMostMatches, ActionThreshold::kMostMinutes, true})}});
}

ThresholdForm::~ThresholdForm() = default;

void ThresholdForm::showRecord(const Dictionary &record) {
    const ThresholdReading reading = readThreshold(record);
    m_isStoredUnreadable = !reading.problem.empty();
    m_threshold = reading.threshold.value_or(kOffered);
    m_matchesStepper->setValue(m_threshold.matches);
    m_minutesStepper->setValue(m_threshold.minutes);
    ui->thresholdHosts->setCurrentIndex(m_threshold.perHost ? 1 : 0);
    ui->thresholdOn->setChecked(reading.threshold.has_value());
    follow();
}

void ThresholdForm::addTo(Dictionary &record) const {
    if (ui->thresholdOn->isChecked() && isWhole()) {
        record.set(kThresholdKey, thresholdRecord(m_threshold));
    }
}

/// Brings the controls in line with the box, and says what they mean.
void ThresholdForm::follow() {
    const bool isOn = ui->thresholdOn->isChecked();
    m_threshold.perHost = ui->thresholdHosts->currentIndex() == 1;
    m_matchesStepper->setEnabled(isOn);
    m_minutesStepper->setEnabled(isOn);
    ui->thresholdHosts->setEnabled(isOn);
    const QString text = meaning();
    ui->thresholdMeaning->say(text, isOn ? !isWhole() : m_isStoredUnreadable);
    ui->thresholdOn->setAccessibleDescription(text);
}

bool ThresholdForm::isWhole() const {
    return m_threshold.matches > 0 && m_threshold.minutes > 0;
}

QString ThresholdForm::meaning() const {
    if (!ui->thresholdOn->isChecked()) {
        return m_isStoredUnreadable ? tr("The stored threshold cannot be used: acts at each match")
                                    : tr("Acts at each match");
    }
    if (!isWhole()) {
        return tr("Without both numbers: acts at each match");
    }
    const QString minutes = minutesText(m_threshold.minutes);
    return m_threshold.perHost ? tr("Then this host pauses for %1").arg(minutes)
                               : tr("Then it pauses for %1").arg(minutes);
}

}  // namespace quorbel
