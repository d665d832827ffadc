#pragma once

#include "common/Severity.h"
#include "events/find/FindChoice.h"

#include <QList>

#include <array>
#include <cstdint>
#include <optional>

class QAction;
class QActionGroup;
class QMenu;

namespace quorbel {

/// A choice from a menu, whose first entry is that anything will do.
class FindMenuChoice : public FindChoice {
    Q_OBJECT

public:
    using FindChoice::FindChoice;

    void openBelow(QWidget &anchor) override;

protected:
    /// Once, at first.
    void addAny(const QString &text);
    /// `text` is also the value shown.
    QAction *addValue(const QString &text, const QVariant &key);
    /// Removes all values.
    void clearValues();
    /// Called each time before the menu opens.
    virtual void fill() {}
    virtual void take(const QVariant &key, const QString &text) = 0;
    [[nodiscard]] QMenu &menu() { return *m_menu; }
    void check(QAction *action);
    void checkAny() { check(m_any); }

private:
    QAction *add(const QString &text);

    QMenu *m_menu = nullptr;
    QActionGroup *m_group = nullptr;
    QAction *m_any = nullptr;
    QList<QAction *> m_values;
};

/// Events at least as severe as a class, or counted in just one.
class FindSeverity : public FindMenuChoice {
    Q_OBJECT

public:
    explicit FindSeverity(QWidget *parent);

    void addTo(EventQuery &query) const override;
    void removeFrom(EventQuery &query) const override;
    void takeFrom(const EventQuery &query) override;
    void clear() override;

protected:
    void take(const QVariant &key, const QString &text) override;

private:
    std::optional<std::uint8_t> m_least;
    std::optional<std::uint8_t> m_only;  // not both
    std::array<QAction *, kSeverityClassCount - 1> m_leastActions{};
    std::array<QAction *, kSeverityClassCount> m_onlyActions{};
};

}  // namespace quorbel
