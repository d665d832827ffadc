#pragma once

#include "hosts/HostList.h"

#include <cstdint>

namespace quorbel {

/// Hosts that have fallen silent, the longest first: a sign, the name in bold, since when, and
/// below that how often it usually sends.
class SilentHosts : public HostList {
    Q_OBJECT

public:
    static constexpr std::size_t kMost = 2;
    static constexpr int kRowHeight = 40;  ///< at the standard font

    explicit SilentHosts(QWidget *parent = nullptr);

    /// Shows the first kMost of the overdue ones.
    void show(std::vector<HostRow> overdue, std::int64_t now);
    [[nodiscard]] const std::vector<HostRow> &rows() const { return m_model->rows(); }

    class Model : public HostListModel {
    public:
        using HostListModel::HostListModel;
        void setNow(std::int64_t now) { m_now = now; }
        [[nodiscard]] std::int64_t now() const { return m_now; }
        [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
        [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;

    private:
        std::int64_t m_now = 0;
    };

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    Model *m_model;
};

}  // namespace quorbel
