#include "settings/NumberStepper.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QValidator>

#include <algorithm>

namespace quorbel {

namespace {

bool isDigit(QChar character) {
    return character >= u'0' && character <= u'9';
}

/// Takes the texts on the way to a number within the limits, and the empty one.
class WholeNumberValidator : public QValidator {
public:
    WholeNumberValidator(int least, int most, QObject *parent)
        : QValidator(parent), m_least(least), m_most(most) {}

    State validate(QString &text, int & /*cursor*/) const override {
        if (text.isEmpty()) {
            return Acceptable;
        }
        const bool fits = std::ranges::all_of(text, isDigit) && text.size() <= kMostDigits &&
                          text.toLongLong() <= m_most;
        // What the user types counts at once, so nothing below the limit may stand in between.
        return fits && text.toLongLong() >= m_least ? Acceptable : Invalid;
    }

private:
    static constexpr qsizetype kMostDigits = 10;

    int m_least;
    int m_most;
};

}  // namespace

NumberStepper::NumberStepper(QLineEdit *field, QSpinBox *stepper, int least, int most,
                             QObject *parent)
    : QObject(parent), m_field(field), m_stepper(stepper), m_least(least) {
    Q_ASSERT(least == 0 || least == 1);
    m_field->setValidator(new WholeNumberValidator(least, most, this));
    m_field->installEventFilter(this);
    m_stepper->setMaximum(most);
    setStepper(0);
    m_stepper->setFocusPolicy(Qt::ClickFocus);  // the field itself takes the arrow keys
    connect(m_field, &QLineEdit::textEdited, this, &NumberStepper::fieldEdited);
    connect(m_stepper, &QSpinBox::valueChanged, this, [this](int value) {
        m_field->setText(QString::number(value));
        m_stepper->setMinimum(m_least);
        Q_EMIT edited(value);
    });
}

void NumberStepper::setValue(std::int64_t value) {
    m_field->setText(QString::number(value));
    setStepper(value);
}

void NumberStepper::clear() {
    m_field->clear();
    setStepper(0);
}

void NumberStepper::setEnabled(bool enabled) {
    m_field->setEnabled(enabled);
    m_stepper->setEnabled(enabled);
}

void NumberStepper::setStepper(std::int64_t value) {
    const QSignalBlocker notAnEdit(m_stepper);
    const bool isEmpty = m_field->text().isEmpty();
    m_stepper->setMinimum(isEmpty ? 0 : m_least);  // an empty field stands one step below 1
    m_stepper->setValue(isEmpty ? 0 : withinLimits(value));
}

int NumberStepper::withinLimits(std::int64_t value) const {
    return static_cast<int>(std::clamp<std::int64_t>(value, m_least, m_stepper->maximum()));
}

void NumberStepper::fieldEdited(const QString &text) {
    QString digits = text;
    int cursor = 0;
    std::int64_t value = text.toLongLong();  // 0 when there is none
    // The validator rejects nothing as long as a value from elsewhere is beyond the limits.
    if (m_field->validator()->validate(digits, cursor) != QValidator::Acceptable) {
        digits.removeIf([](QChar character) { return !isDigit(character); });
        if (!digits.isEmpty()) {
            bool isShort = false;
            value = digits.toLongLong(&isShort);
            value = isShort ? withinLimits(value) : m_stepper->maximum();
            digits = QString::number(value);
        }
        m_field->setText(digits);
    }
    setStepper(value);
    Q_EMIT edited(value);
}

bool NumberStepper::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down) {
            m_stepper->stepBy(key == Qt::Key_Up ? 1 : -1);
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace quorbel
