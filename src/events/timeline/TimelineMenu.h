#pragma once

#include "core/EventGroups.h"

#include <QObject>

class QMenu;

namespace quorbel {

class Timeline;

/// The timeline's menu: what its columns are stacked by. That is remembered across starts (see
/// remember()); at first it is the rating.
class TimelineMenu : public QObject {
    Q_OBJECT

public:
    /// Belongs to the timeline.
    explicit TimelineMenu(Timeline &timeline);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void add(const char *name, const QString &text, EventGrouping grouping);

    Timeline &m_timeline;
    QMenu *m_menu;
};

}  // namespace quorbel
