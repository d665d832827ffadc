#pragma once

#include <QScrollArea>

namespace quorbel {

/// What a page or sheet shows above its buttons. Scrolls where there is not enough room for it.
class ContentArea : public QScrollArea {
    Q_OBJECT

public:
    /// Puts the rows of `view`'s form into an area of its own, but for the last one where that is
    /// the row of buttons, which stays in sight below. The form is a column, QVBoxLayout, that is
    /// complete but not shown yet.
    static ContentArea &wrap(QWidget &view);

    /// The height that the whole content needs at that width.
    [[nodiscard]] int heightForAll(int width) const;
    [[nodiscard]] int widthForAll() const;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

private:
    explicit ContentArea(QWidget &view);
};

}  // namespace quorbel
