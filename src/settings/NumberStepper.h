#pragma once

#include <QObject>

#include <cstdint>

class QLineEdit;
class QSpinBox;

namespace quorbel {

/// Ties a number field and the stepper beside it to one value.
///
/// The field takes whole numbers within the limits; what is typed moves the stepper and the stepper
/// fills the field, whose up and down keys step too. From an empty field the first step is to 1. A
/// value from elsewhere may lie outside the limits: it is shown as it is, and stays until the user
/// changes it.
class NumberStepper : public QObject {
    Q_OBJECT

public:
    /// The two controls must outlive the object. `least` is 0 or 1.
    NumberStepper(QLineEdit *field, QSpinBox *stepper, int least, int most, QObject *parent);

    /// Shows a value in both. Not an edit.
    void setValue(std::int64_t value);
    /// Empties the field. Not an edit.
    void clear();
    void setEnabled(bool enabled);

Q_SIGNALS:
    /// The user typed or stepped to another value; an emptied field counts as 0.
    void edited(std::int64_t value);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void fieldEdited(const QString &text);
    void setStepper(std::int64_t value);
    [[nodiscard]] int withinLimits(std::int64_t value) const;

    QLineEdit *m_field;
    QSpinBox *m_stepper;
    int m_least;
};

}  // namespace quorbel
