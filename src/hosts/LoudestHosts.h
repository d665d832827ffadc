#pragma once

#include "hosts/HostList.h"

#include <cstdint>

namespace quorbel {

/// The hosts that sent most in 24 hours: name, a bar, the number, and the share of all events. The
/// bars are as long as the numbers say; their outline is the day before.
class LoudestHosts : public HostList {
    Q_OBJECT

public:
    static constexpr std::size_t kMost = 5;
    static constexpr int kRowHeight = 22;  ///< at the standard font

    explicit LoudestHosts(QWidget *parent = nullptr);

    /// `all` is what came from everybody in 24 hours.
    void show(const std::vector<HostRow> &rows, std::uint64_t all);
    [[nodiscard]] const std::vector<HostRow> &rows() const { return m_model->rows(); }

    enum Column { kHost, kBar, kCount, kShare, kColumnCount };

    class Model : public HostListModel {
    public:
        using HostListModel::HostListModel;
        void setAll(std::uint64_t all) { m_all = all; }
        [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
        [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
        [[nodiscard]] double shareOf(const HostRow &row) const;
        /// What the longest bar, or outline, stands for.
        [[nodiscard]] std::uint64_t longest() const;

    private:
        [[nodiscard]] QString text(const HostRow &row, int column) const;
        std::uint64_t m_all = 0;
    };

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    Model *m_model;
};

}  // namespace quorbel
