#pragma once

#include <QScrollArea>

namespace quorbel {

/// What the keyboard and the mouse mean to the controls in a scroll area: the Tab key brings what
/// it leads to into sight, wherever it comes from, and the wheel scrolls and changes nothing.
class ScrolledControls : public QObject {
    Q_OBJECT

public:
    /// Belongs to the area, whose content is complete.
    explicit ScrolledControls(QScrollArea &area);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QScrollArea &m_area;
};

}  // namespace quorbel
