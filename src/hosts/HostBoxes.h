#pragma once

#include "core/AppDelegate.h"
#include "hosts/HostRows.h"

#include <QWidget>

#include <memory>
#include <optional>

namespace Ui {
class HostBoxes;
}

namespace quorbel {

class HostPulse;

/// Two boxes below the cards of the home page: the loudest hosts, and those that have fallen
/// silent. In a small window they are one line of links.
class HostBoxes : public QWidget {
    Q_OBJECT

public:
    static constexpr int kSmallWidth = 900;  ///< below that a window is small, at the standard font
    static constexpr int kSmallHeight = 650;

    /// `delegate` outlives the boxes.
    explicit HostBoxes(AppDelegate &delegate, QWidget *parent = nullptr);
    ~HostBoxes() override;

    [[nodiscard]] HostPulse &pulse() { return *m_pulse; }

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    /// How the box of silent hosts stands.
    struct Silence {
        const char *icon;
        bool isGood = false;
        QString text{};
        QString detail{};
    };

    void refresh();
    void showLoudest(const std::vector<HostRow> &rows);
    void showSilent(std::vector<HostRow> overdue);
    void showLinks();
    void fitToWindow();
    void fitLinks();
    void openHosts();
    void openEvents(const QString &host);
    [[nodiscard]] std::uint64_t lastDayOf(const std::vector<HostRow> &rows) const;
    [[nodiscard]] bool isConnected() const;
    [[nodiscard]] Silence silence() const;

    AppDelegate &m_delegate;
    std::unique_ptr<Ui::HostBoxes> ui;
    HostPulse *m_pulse;
    std::optional<ServiceState::Watch> m_serviceWatch;  // while it is on screen
    bool m_wasConnected = true;
    std::size_t m_overdue = 0;
    std::uint64_t m_lastDay = 0;  // how much came from everybody
};

}  // namespace quorbel
