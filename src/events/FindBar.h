#pragma once

#include "core/EventQuery.h"

#include <QWidget>

#include <array>

class QAction;
class QLabel;
class QLineEdit;
class QToolButton;

namespace quorbel {

/// One row of controls in which the user says which events are wanted. In a narrow window it folds
/// to one button, which the shortcut and a click unfold.
class FindBar : public QWidget {
    Q_OBJECT

public:
    explicit FindBar(QWidget *parent = nullptr);

    [[nodiscard]] EventQuery filter() const;
    /// Unfolds the bar and puts the cursor into its field, all of whose text is selected.
    void open();
    void clear();
    /// Says at the field what is wrong with the expression; an empty text for nothing.
    void showError(const QString &error);
    /// Of events by rating, as EventRating counts them.
    void showCounts(const std::array<std::size_t, kRatingCount> &counts);

Q_SIGNALS:
    void filterChanged();
    /// The user is done with the bar and goes to the table.
    void left();

protected:
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QToolButton *addToggle(const char *name, const QString &text, const QString &accessibleName,
                           const QString &toolTip);
    void addRatings();
    void change();
    void fold();
    [[nodiscard]] bool isNarrow() const;

    QToolButton *m_unfold;
    QWidget *m_row;
    QLineEdit *m_text;
    QAction *m_warning;
    QLabel *m_error;
    QToolButton *m_case;
    QToolButton *m_regex;
    std::array<QToolButton *, kRatingCount - 1> m_ratings{};  // by EventRating - 1
    QToolButton *m_clear;
    bool m_isUnfolded = false;
    bool m_isClearing = false;
};

}  // namespace quorbel
