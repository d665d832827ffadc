#pragma once

#include <QObject>
#include <QTimer>

#include <cstdint>
#include <functional>

namespace quorbel {

class HostWatch;

/// While a view is on screen, has the hosts counted and judged, in slices, and says each second
/// when that is done.
class HostPulse : public QObject {
    Q_OBJECT

public:
    static constexpr int kSliceMs = 4;

    /// Belongs to the view, which is not shown yet. `hosts` outlives both.
    HostPulse(HostWatch &hosts, QWidget &view);

    /// The system's clock unless this is called: seconds since 1970.
    void setClock(std::function<std::int64_t()> clock) { m_clock = std::move(clock); }
    [[nodiscard]] std::int64_t now() const { return m_clock(); }

Q_SIGNALS:
    void beat();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void goOn();

    HostWatch &m_hosts;
    std::function<std::int64_t()> m_clock;
    QTimer m_second;
    QTimer m_slice;
};

}  // namespace quorbel
