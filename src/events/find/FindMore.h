#pragma once

#include <QList>
#include <QPushButton>

namespace quorbel {

class FindChoice;
class FindRatings;

/// Stands for the choices of the filter bar that have no room in it: for some as "...", for all of
/// them as a funnel that says how many are in use. Its menu opens them.
class FindMore : public QPushButton {
    Q_OBJECT

public:
    FindMore(FindRatings &ratings, QWidget *parent);

    /// Shows itself where there are any.
    void standFor(const QList<FindChoice *> &choices);
    void standForAll(const QList<FindChoice *> &choices);

private:
    void openMenu();
    void showState(int inUse);

    FindRatings &m_ratings;
    QList<FindChoice *> m_choices;
    bool m_isForAll = false;
};

}  // namespace quorbel
