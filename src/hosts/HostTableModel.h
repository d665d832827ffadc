#pragma once

#include "hosts/HostRows.h"
#include "platform/DateFormat.h"

#include <QAbstractTableModel>
#include <QFont>
#include <QIcon>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorbel {

/// All hosts, a row each, in the order asked for by sort().
class HostTableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { kHost, kFirst, kLast, kToday, kMean, kSevereShare, kGap, kSilent, kColumnCount };

    explicit HostTableModel(QObject *parent = nullptr);

    /// Takes the hosts as they are now, quickest where most stand where they stood before. Rows
    /// keep their selection, also where they move.
    void setRows(std::vector<HostRow> hosts);
    /// Whether rows stay where they are when the hosts change, and new ones come last.
    void setOrderKept(bool isKept) { m_isOrderKept = isKept; }
    /// As the settings hold it; the first day is shown without the time.
    void setDateFormat(const std::string &setting);
    [[nodiscard]] const HostRow &row(int row) const {
        return m_hosts[m_order[static_cast<std::size_t>(row)]];
    }
    /// In no order.
    [[nodiscard]] const std::vector<HostRow> &hosts() const { return m_hosts; }

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    void sort(int column, Qt::SortOrder order) override;

private:
    /// Where a host stands among those that were handed over.
    using Place = std::size_t;
    using Places = std::vector<Place>;
    static constexpr Place kNowhere = static_cast<Place>(-1);

    [[nodiscard]] Places placesIn(const std::vector<HostRow> &hosts) const;
    void dropGone(const Places &places);
    void addNew(const Places &places);
    void arrange();
    void tellOfChanges();
    [[nodiscard]] Places arranged() const;
    [[nodiscard]] bool comesBefore(const HostRow &one, const HostRow &other) const;
    [[nodiscard]] QString text(const HostRow &row, int column) const;
    [[nodiscard]] bool isPale(const HostRow &row, int column) const;
    [[nodiscard]] QString gapText(const HostRow &row) const;
    static QString render(const DateFormat *format, std::int64_t moment);

    std::vector<HostRow> m_hosts;  // as they were handed over
    Places m_order;                // of the rows
    bool m_isOrderKept = false;
    int m_sortColumn = kSilent;
    Qt::SortOrder m_direction = Qt::DescendingOrder;
    std::optional<std::string> m_dateSetting;
    std::unique_ptr<DateFormat> m_moments;
    std::unique_ptr<DateFormat> m_days;
    QFont m_bold;
    QIcon m_overdue;
    QIcon m_none;  // as wide, so that all names begin at one place
};

}  // namespace quorbel
