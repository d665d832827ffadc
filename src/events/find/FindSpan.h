#pragma once

#include "events/find/EventSpan.h"
#include "events/find/FindMenuChoice.h"

#include <functional>

class QDateTimeEdit;
class QPushButton;

namespace quorbel {

class FindPanel;

/// Events of a span of time.
class FindSpan : public FindMenuChoice {
    Q_OBJECT

public:
    explicit FindSpan(QWidget *parent);

    /// What time it is; the system's where none is set.
    void setClock(std::function<QDateTime()> clock) { m_clock = std::move(clock); }

    [[nodiscard]] QDateTime now() const { return m_clock(); }

    void addTo(EventQuery &query) const override;
    void removeFrom(EventQuery &query) const override;
    void takeFrom(const EventQuery &query) override;
    void clear() override { use({}); }
    void openBelow(QWidget &anchor) override;

    /// Takes this span, by its name if it has one now.
    void choose(const EventSpan::Moments &moments);

    /// Sends changed() when the span has gone on with the time, and timePassed(). Done by itself
    /// now and then.
    void follow();

Q_SIGNALS:
    /// Now and then.
    void timePassed();

protected:
    void take(const QVariant &key, const QString &text) override;

private:
    void makePanel();
    void use(const EventSpan &span);
    void askFromTo();
    void showFromTo();

    EventSpan m_span;
    EventSpan::Moments m_moments;  // as they were sent last
    std::function<QDateTime()> m_clock = [] { return QDateTime::currentDateTime(); };
    QList<QAction *> m_actions;  // by EventSpan::Kind - 1
    QWidget *m_anchor = this;
    FindPanel *m_panel;
    QDateTimeEdit *m_from;
    QDateTimeEdit *m_to;
    QPushButton *m_show;
};

}  // namespace quorbel
