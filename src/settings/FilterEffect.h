#pragma once

#include "core/FilterCount.h"
#include "platform/Value.h"

#include <QWidget>

#include <memory>

namespace quorbel {

class ConsequenceLine;
class FilterForm;
class Recount;

/// Says below a filter form for how many of the listed events its record would have held, while it
/// is edited.
class FilterEffect : public QWidget {
    Q_OBJECT

public:
    enum class Kind { kLeavesOut, kAccepts, kMatches };

    explicit FilterEffect(QWidget *parent = nullptr);
    ~FilterEffect() override;

    /// Begins; `form` has what is edited. Both outlive this. Called once.
    void follow(const FilterForm &form, EventList &events, Kind kind);

private:
    void start();
    void show();
    [[nodiscard]] QString consequence() const;
    [[nodiscard]] QString ofAll() const;
    [[nodiscard]] QString ofSome() const;
    [[nodiscard]] QString more() const;
    /// Whether it would have been for more than one event, and for all there are.
    [[nodiscard]] bool isAll() const;

    const FilterForm *m_form = nullptr;
    Kind m_kind = Kind::kMatches;
    ConsequenceLine *m_line;
    std::unique_ptr<FilterCount> m_count;
    std::unique_ptr<Recount> m_recount;
};

}  // namespace quorbel
