#pragma once

#include "core/EventQuery.h"

#include <QPushButton>

namespace quorbel {

/// A button of the filter bar behind which a value is chosen. It is bare while none is, and shows
/// the one in use, shortened where it is long.
class FindChoice : public QPushButton {
    Q_OBJECT

public:
    FindChoice(const char *name, const QString &title, const QString &purpose, QWidget *parent);

    [[nodiscard]] const QString &title() const { return m_title; }
    /// Whole; empty while none is in use.
    [[nodiscard]] const QString &value() const { return m_value; }
    [[nodiscard]] bool isInUse() const { return !m_value.isEmpty(); }

    virtual void addTo(EventQuery &query) const = 0;
    virtual void removeFrom(EventQuery &query) const = 0;
    /// Chooses what the query asks for, as far as it can be said here. Precondition: none is in
    /// use.
    virtual void takeFrom(const EventQuery &query) = 0;
    virtual void clear() = 0;
    /// Opens what is chosen from below another control, where this one is not in sight.
    virtual void openBelow(QWidget &anchor) = 0;

    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    void changed();

protected:
    /// An empty text for no value. `shortened` stands for it on the button, if it is given. Sends
    /// changed().
    void showValue(const QString &value, const QString &shortened = {});
    /// Of a value on the button, in pixels at the standard font; what is longer is cut.
    void setWidest(int pixels) { m_widest = pixels; }
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_title;
    QString m_purpose;
    QString m_value;
    int m_widest = 140;
};

}  // namespace quorbel
