#pragma once

#include <QTableView>

namespace quorbel {

/// The table of events. Says in the middle what to expect while there are none.
class EventTableView : public QTableView {
    Q_OBJECT

public:
    explicit EventTableView(QWidget *parent = nullptr);

Q_SIGNALS:
    /// Return or Enter. Unlike activated(), never for a click, whatever the desktop's style.
    void enterPressed();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
};

}  // namespace quorbel
