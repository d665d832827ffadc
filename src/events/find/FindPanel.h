#pragma once

#include <QFrame>

namespace quorbel {

/// A frame of controls that opens below another control and closes when one clicks elsewhere or
/// presses Esc.
class FindPanel : public QFrame {
    Q_OBJECT

public:
    explicit FindPanel(QWidget *parent);

    /// With its left or its right edge below the anchor's.
    void openBelow(QWidget &anchor, Qt::AlignmentFlag edge = Qt::AlignLeft);
};

}  // namespace quorbel
