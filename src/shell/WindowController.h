#pragma once

#include "core/AlertQueueLink.h"
#include "core/AppDelegate.h"
#include "core/EventIntake.h"
#include "core/NoticeFollower.h"
#include "core/PageLinks.h"
#include "platform/bus/NotificationObserver.h"
#include "platform/gui/SoundPlayer.h"
#include "platform/gui/Storyboard.h"

#include <QList>
#include <QMainWindow>
#include <QPointer>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

class QAction;

namespace Ui {
class WindowController;
}

namespace quorbel {

class HelpWindow;
class NavigationRail;
class NotificationPump;
class PackingPump;
class PopupThread;
class ScreenFit;
class ServiceDetails;
class ServicePump;

/// The main window: eight pages, the way from one to the other, and the way in for events.
///
/// Made by its constructor with all its pages, and loaded by windowDidLoad(); nothing is shown
/// before makeVisible(). Refers to the delegate and the storyboard, which outlive it; the delegate
/// knows it for as long as it lives.
class WindowController final : public QMainWindow, public MainWindowLink, public NoticeSink {
    Q_OBJECT

public:
    /// The storyboard knows the eight pages; those at Tab::kHome and Tab::kEvents are the
    /// HomePageLink and the EventListPageLink. Throws std::bad_cast where that is not so.
    WindowController(AppDelegate &delegate, const Storyboard &storyboard);
    ~WindowController() override;
    WindowController(const WindowController &) = delete;
    WindowController &operator=(const WindowController &) = delete;

    /// Once: loads the stored events, gives the window its size and place, then starts the alert
    /// worker and observes the service's notifications.
    void windowDidLoad();

    /// Where new events go when alerts are on: the alert worker, unless another was set before the
    /// window was loaded; null for nowhere.
    void setAlertQueue(AlertQueueLink *queue) { m_alertQueue = queue; }
    /// Whether the window, once closed, can be had back. Where not, closing it quits.
    void setReopenable(std::function<bool()> isReopenable) {
        m_isReopenable = std::move(isReopenable);
    }
    /// Whether every event that the service tells of from now on is heard; false before
    /// windowDidLoad() and while the bus is away.
    [[nodiscard]] bool hearsService() const;
    /// Home, Events, Reports, Tools, About and Quit, as the whole application's menus have them.
    [[nodiscard]] QList<QAction *> applicationCommands() const;

    // Navigation.
    void Home() override;
    void Scan() override;
    void Reports() override;
    void Tools() override;
    void About() override;
    /// Opens the help book, or raises it where it is open.
    void Help();
    void HelpDropDown();
    void makeVisible() override;
    void openSettingsPage(Tab page, Tab parentTab) override;
    void selectTab(Tab page) override;
    void proposeRecord(Tab page, Tab parentTab, const Dictionary &record) override;
    void showEvents(const EventQuery &query) override;

    // Events.
    EventPlace setNotification(const EventFields &event);
    void removeNotification(const EventFields &announced);
    /// Says how far it read the log files.
    std::vector<LogExtent> initializeLog();
    void syslogNotify(const NotificationObserver::UserInfo &userInfo);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void notified(const NotificationInfo &info) override { syslogNotify(info); }
    void missed(const EventFields &event) override { setNotification(event); }
    void logBeginsAnew() override { m_intake->beginAnew(); }
    void readAnew(const EventFields &event) override { m_intake->takeLogged(event); }
    void logWasReadAnew() override { m_intake->endAnew(); }
    [[nodiscard]] bool canTakeMany() const override { return m_intake->canTakeMany(); }
    void manyNotified(LoadedArrivals events) override;
    void manyMissed(LoadedArrivals events) override { m_intake->takeMany(std::move(events)); }
    void manyReadAnew(LoadedArrivals events) override { m_intake->takeLogged(std::move(events)); }
    void manyBegin() override { m_intake->beginMany(); }
    void manyEnd() override { m_intake->endMany(); }

    /// Hands new events to the alert queue when alerts are on: the one at a place and those next
    /// to it that are later.
    void raiseAlerts(const EventPlace &first, std::size_t count);
    void connectCommands();
    /// Edit and View hold the commands of the page in sight, whatever it has.
    void fillPageMenus();
    /// What the service says of itself, above the last entry of the navigation.
    void addServiceLine(NavigationRail &rail);
    [[nodiscard]] QWidget *pageAt(Tab page) const;

    AppDelegate &m_delegate;
    const Storyboard &m_storyboard;
    std::unique_ptr<Ui::WindowController> ui;
    ScreenFit *m_screenFit = nullptr;          // owned by the window
    EventListPageLink *m_eventPage = nullptr;  // both owned by the tab container
    HomePageLink *m_homePage = nullptr;
    std::unique_ptr<EventIntake> m_intake;
    SoundPlayer m_sound;
    std::unique_ptr<PopupThread> m_popupThread;
    AlertQueueLink *m_alertQueue = nullptr;
    std::function<bool()> m_isReopenable = [] { return false; };
    QPointer<QWidget> m_aboutSheet;
    QPointer<ServiceDetails> m_serviceSheet;
    std::unique_ptr<HelpWindow> m_help;
    std::unique_ptr<NoticeFollower> m_follower;
    std::unique_ptr<NotificationPump> m_notifications;
    std::unique_ptr<ServicePump> m_servicePump;
    std::unique_ptr<PackingPump> m_packingPump;
};

}  // namespace quorbel
