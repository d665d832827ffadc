#pragma once

#include "platform/gui/RowTableView.h"

namespace quorbel {

/// The table of events. Says in the middle what to expect while there are none.
///
/// Its columns are as wide as their texts need in its font, and the message takes the rest. The
/// hosts' column widens to the longest host that comes into sight, up to a full IPv6 address, as
/// far as that leaves the message its share. Once the user has set a width or moved a column, all
/// stay as they are, and the last one takes the rest.
class EventTableView : public RowTableView {
    Q_OBJECT

public:
    explicit EventTableView(QWidget *parent = nullptr);

    /// `model` has the columns of an EventTableModel.
    void setModel(QAbstractItemModel *model) override;

Q_SIGNALS:
    /// A mouse button was pressed, and the selection follows it already.
    void firstPress();
    /// It was pressed again, for a double click, whatever stands under the pointer now. Unlike
    /// doubleClicked(), which needs the same row there.
    void secondPress();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    [[nodiscard]] int widthFor(const QString &text) const;
    [[nodiscard]] int widestHostInSight() const;
    void fitColumns();
    [[nodiscard]] int leastWidth(int column) const;
    void makeRoomForMessage();

    int m_narrowHost = 0;
    int m_widestHost = 0;  // at least the narrow one
    bool m_isFitting = false;
    bool m_isSetByUser = false;
    bool m_wasPressed = false;
};

}  // namespace quorbel
