#pragma once

#include "core/ArrangedEvents.h"

#include <QAbstractTableModel>
#include <QIcon>

#include <array>
#include <functional>
#include <memory>
#include <utility>

namespace quorbel {

/// The arranged events as the table shows them: one row an event, newest first.
class EventTableModel : public QAbstractTableModel, private EventListObserver {
    Q_OBJECT

public:
    enum Column { kRating, kDate, kPriority, kHost, kMessage, kColumnCount };

    /// Observes `events`, which outlive the model.
    explicit EventTableModel(ArrangedEvents &events, QObject *parent = nullptr);
    /// Shows all events of `list`, which outlives the model.
    explicit EventTableModel(EventList &list, QObject *parent = nullptr);
    ~EventTableModel() override;
    EventTableModel(const EventTableModel &) = delete;
    EventTableModel &operator=(const EventTableModel &) = delete;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;

    /// What a screen reader tells of a row beside its cells' texts.
    void setDescription(std::function<QString(int row)> description) {
        m_description = std::move(description);
    }

    /// Says that texts and images of any row may have changed.
    void refreshAll();

private:
    void rowsWillBeInsertedAtTop(std::size_t count) override;
    void rowsWereInserted(std::size_t) override;
    void rowsWillBeRemoved(std::size_t first, std::size_t count) override;
    void rowsWereRemoved() override;
    void listWillChangeAtLarge() override;
    void listChangedAtLarge() override;

    [[nodiscard]] QString text(std::size_t row, int column) const;

    std::unique_ptr<ArrangedEvents> m_own;
    ArrangedEvents &m_events;
    EventList &m_list;
    std::function<QString(int row)> m_description;
    std::array<QIcon, 3> m_images;  // by SeverityLevel
};

}  // namespace quorbel
