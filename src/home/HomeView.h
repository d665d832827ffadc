#pragma once

#include "common/Severity.h"
#include "core/PageLinks.h"
#include "platform/gui/Page.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

class QLabel;

namespace Ui {
class HomeView;
}

namespace quorbel {

class AppDelegate;
class HomeCards;

/// The home page: how many events of each severity there are, what they amount to, and whether the
/// service, actions and export are in use. The card of each severity tells of its last day.
class HomeView : public Page, public HomePageLink {
    Q_OBJECT

public:
    /// `delegate` outlives the page.
    explicit HomeView(AppDelegate &delegate, QWidget *parent = nullptr);
    ~HomeView() override;

    /// Puts what there is to say of hosts below the cards; the page owns it from now on.
    void setHostBoxes(QWidget &boxes);

    void viewDidLoad() override;
    void viewWillAppear() override;

    [[nodiscard]] bool isOnScreen() const override { return isPageOnScreen(); }
    /// Called for each event while the page is on screen: touches only what has changed.
    void setEventsStatus() override;
    [[nodiscard]] int severityStatus() const override { return m_severityStatus; }

    void setMonitorStatus();
    void setActionsStatus();
    void setExportStatus();

    [[nodiscard]] HomeCards &cards() { return *m_cards; }

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void makeScrollable();
    void showCounters();
    void showRating();
    void fit();

    struct CounterField {
        QLabel *label = nullptr;
        std::optional<std::int64_t> shown;
    };

    AppDelegate &m_delegate;
    std::unique_ptr<Ui::HomeView> ui;
    std::unique_ptr<HomeCards> m_cards;
    std::array<CounterField, kSeverityClassCount> m_counters;
    int m_severityStatus = 0;
    int m_shownRating = -1;
    double m_shownResolution = 0;
};

}  // namespace quorbel
