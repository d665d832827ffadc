#pragma once

#include "events/find/FindChoice.h"

class QLabel;
class QLineEdit;
class QListWidget;
class QListWidgetItem;

namespace quorbel {

class EventList;
class FindPanel;

/// Events of the hosts that a HostPattern means. It is typed, or chosen from the hosts of the
/// listed events, which narrow to what is typed.
class FindHost : public FindChoice {
    Q_OBJECT

public:
    explicit FindHost(QWidget *parent);

    /// Once; the list outlives this.
    void attach(EventList &events) { m_events = &events; }

    void addTo(EventQuery &query) const override { query.host = value().toStdString(); }
    void removeFrom(EventQuery &query) const override { query.host.clear(); }
    void takeFrom(const EventQuery &query) override;
    void clear() override { showValue({}); }
    void openBelow(QWidget &anchor) override;

    /// Means that host alone.
    void only(const QString &host);
    /// Excludes that host from those meant so far.
    void exclude(const QString &host);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void offer();
    /// Takes what is typed, if it is right.
    void takeTyped();
    void showError(const QString &error);
    void take(const QString &pattern);
    void takeItem(const QListWidgetItem *item);
    [[nodiscard]] QStringList hosts() const;

    EventList *m_events = nullptr;
    FindPanel *m_panel;
    QLineEdit *m_text;
    QLabel *m_error;
    QListWidget *m_list;
};

}  // namespace quorbel
