#pragma once

#include "core/EventQuery.h"

#include <QWidget>

#include <array>

class QPushButton;

namespace quorbel {

/// The three ratings, each with how many events meet all the other conditions: any number of them
/// can be chosen.
class FindRatings : public QWidget {
    Q_OBJECT

public:
    static constexpr std::size_t kCount = kRatingCount - 1;

    explicit FindRatings(QWidget *parent);

    void addTo(EventQuery &query) const;
    void takeFrom(const EventQuery &query);
    void clear();
    /// By EventRating, as is the next one.
    void showCounts(const std::array<std::size_t, kRatingCount> &counts);
    /// The worst first.
    [[nodiscard]] const std::array<QPushButton *, kCount> &buttons() const { return m_buttons; }

Q_SIGNALS:
    void changed();

private:
    std::array<QPushButton *, kCount> m_buttons{};
};

}  // namespace quorbel
