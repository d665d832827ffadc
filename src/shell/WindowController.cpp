#include "shell/WindowController.h"

#include "alerts/PopupThread.h"
#include "core/AppState.h"
#include "help/HelpWindow.h"
#include "platform/Files.h"
#include "platform/gui/LetteredMenu.h"
#include "platform/gui/ProgramEnd.h"
#include "platform/gui/ProgressWindow.h"
#include "platform/gui/QtText.h"
#include "platform/gui/RowCommands.h"
#include "platform/gui/ScreenFit.h"
#include "platform/gui/Sheet.h"
#include "platform/gui/ViewCommands.h"
#include "shell/NavigationRail.h"
#include "shell/NotificationPump.h"
#include "shell/PackingPump.h"
#include "shell/ServiceDetails.h"
#include "shell/ServiceLine.h"
#include "shell/ServicePump.h"
#include "ui_WindowController.h"

#include <QAction>
#include <QCloseEvent>
#include <QCursor>
#include <QMenu>

#include <array>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel {

namespace {

/// The pages' identifiers, in the order of Tab.
constexpr std::array kPages{"HomeView",         "ScanView",         "ReportsView",     "ToolsView",
                            "ToolsViewOptions", "ToolsViewActions", "ToolsViewExport", "HostsView"};

constexpr int kBelowPointer = 20;

/// A notification's fields without "Type"; `others` holds the ones without a place of their own.
EventFields eventFields(const NotificationObserver::UserInfo &userInfo,
                        std::vector<std::pair<std::string_view, std::string_view>> &others) {
    EventFields fields;
    for (const auto &[key, value] : userInfo) {
        if (key == "Date") {
            fields.date = value;
        } else if (key == "Priority") {
            fields.priority = value;
        } else if (key == "Host") {
            fields.host = value;
        } else if (key == "Message") {
            fields.message = value;
        } else if (key != "Type") {
            others.emplace_back(key, value);
        }
    }
    fields.others = others;
    return fields;
}

std::string_view typeOf(const NotificationObserver::UserInfo &userInfo) {
    for (const auto &[key, value] : userInfo) {
        if (key == "Type") {
            return value;
        }
    }
    return {};
}

}  // namespace

WindowController::WindowController(AppDelegate &delegate, const Storyboard &storyboard)
    : m_delegate(delegate), m_storyboard(storyboard), ui(std::make_unique<Ui::WindowController>()) {
    ui->setupUi(this);
    m_screenFit = new ScreenFit(*this, minimumSize());
    for (const char *identifier : kPages) {
        ui->tabView->addWidget(m_storyboard.instantiate(QString::fromLatin1(identifier)).release());
    }
    m_eventPage = &dynamic_cast<EventListPageLink &>(*pageAt(Tab::kEvents));
    m_homePage = &dynamic_cast<HomePageLink &>(*pageAt(Tab::kHome));
    m_intake = std::make_unique<EventIntake>(m_delegate.state, m_delegate.events, m_delegate.hold,
                                             *m_eventPage, *m_homePage);
    m_intake->addObserver(m_delegate.hosts);
    addServiceLine(*new NavigationRail(*ui->navigation));
    connectCommands();
    selectTab(Tab::kHome);
    m_delegate.setMainWindow(this);
}

void WindowController::addServiceLine(NavigationRail &rail) {
    auto *line = new ServiceLine(m_delegate, ui->navigation);
    ui->navigationLayout->insertWidget(ui->navigationLayout->indexOf(ui->HelpDropDown), line);
    line->setNarrow(rail.isNarrow());
    connect(&rail, &NavigationRail::narrowChanged, line, &ServiceLine::setNarrow);
    connect(line, &ServiceLine::detailsAsked, this, [this] {
        if (!m_serviceSheet) {
            m_serviceSheet = new ServiceDetails(m_delegate.service);
            m_serviceSheet->presentOver(ui->tabView);
        }
    });
}

WindowController::~WindowController() {
    m_delegate.setMainWindow(nullptr);
}

void WindowController::connectCommands() {
    connect(ui->Home, &QAbstractButton::clicked, this, &WindowController::Home);
    connect(ui->Scan, &QAbstractButton::clicked, this, &WindowController::Scan);
    connect(ui->Reports, &QAbstractButton::clicked, this, &WindowController::Reports);
    connect(ui->Tools, &QAbstractButton::clicked, this, &WindowController::Tools);
    connect(ui->HelpDropDown, &QAbstractButton::clicked, this, &WindowController::HelpDropDown);

    connect(ui->applicationHome, &QAction::triggered, this, [this] { m_delegate.Home(); });
    connect(ui->applicationScan, &QAction::triggered, this, [this] { m_delegate.Scan(); });
    connect(ui->applicationReports, &QAction::triggered, this, [this] { m_delegate.Reports(); });
    connect(ui->applicationTools, &QAction::triggered, this, [this] { m_delegate.Tools(); });
    connect(ui->applicationAbout, &QAction::triggered, this, [this] { m_delegate.About(); });
    connect(ui->applicationHelp, &QAction::triggered, this, &WindowController::Help);
    connect(ui->closeWindow, &QAction::triggered, this, &QWidget::close);
    connect(ui->applicationQuit, &QAction::triggered, this, [] { endProgram(); });
    connect(ui->tabView, &QStackedWidget::currentChanged, this, &WindowController::fillPageMenus);
    fillPageMenus();
}

void WindowController::fillPageMenus() {
    const auto fill = [](QMenu &menu, auto *commands) {
        menu.clear();
        if (commands != nullptr) {
            commands->addTo(menu);
        }
        menu.menuAction()->setEnabled(!menu.isEmpty());
    };
    const QWidget &page = *ui->tabView->currentWidget();
    fill(*ui->editMenu, page.findChild<RowCommands *>());
    fill(*ui->viewMenu, page.findChild<ViewCommands *>());
}

QList<QAction *> WindowController::applicationCommands() const {
    return {ui->applicationHome,  ui->applicationScan,  ui->applicationReports,
            ui->applicationTools, ui->applicationAbout, ui->applicationQuit};
}

void WindowController::windowDidLoad() {
    const std::vector<LogExtent> read = initializeLog();
    m_screenFit->openAtMinimum();
    // Else the first navigation entry would have the keyboard focus.
    ui->tabView->setFocus();
    m_popupThread = std::make_unique<PopupThread>(
        m_delegate, m_storyboard,
        [this](const std::string &path) { m_sound.play(toQString(path)); });
    if (m_alertQueue == nullptr) {
        m_alertQueue = m_popupThread.get();
    }
    m_popupThread->start();
    m_follower = std::make_unique<NoticeFollower>(*this, libraryFolder(), read);
    m_notifications = std::make_unique<NotificationPump>(*m_follower);
    m_servicePump = std::make_unique<ServicePump>(m_delegate.service);
    m_packingPump = std::make_unique<PackingPump>(m_delegate.events);
}

bool WindowController::hearsService() const {
    return m_notifications && m_notifications->isConnected();
}

void WindowController::Home() {
    selectTab(Tab::kHome);
}
void WindowController::Scan() {
    selectTab(Tab::kEvents);
}
void WindowController::Reports() {
    selectTab(Tab::kReports);
}
void WindowController::Tools() {
    selectTab(Tab::kTools);
}

void WindowController::About() {
    if (m_aboutSheet) {
        m_aboutSheet->raise();
        m_aboutSheet->activateWindow();
        return;
    }
    auto controller = m_storyboard.instantiate(QStringLiteral("aboutView"));
    if (auto *sheet = dynamic_cast<Sheet *>(controller.get())) {
        m_aboutSheet = controller.release();
        sheet->presentOver(ui->tabView);
    }
}

void WindowController::Help() {
    if (!m_help) {
        m_help = std::make_unique<HelpWindow>();
    }
    m_help->makeVisible();
}

void WindowController::HelpDropDown() {
    auto *menu = new LetteredMenu(tr("Menu"), this);
    menu->setObjectName(QStringLiteral("helpDropDownMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    connect(menu->addAction(ui->applicationHelp->text()), &QAction::triggered, this,
            &WindowController::Help);
    menu->addSeparator();
    connect(menu->addAction(ui->applicationAbout->text()), &QAction::triggered, this,
            &WindowController::About);
    menu->popup(QCursor::pos() + QPoint(0, kBelowPointer));
}

void WindowController::makeVisible() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    QWidget::show();
    raise();
    activateWindow();
}

void WindowController::openSettingsPage(Tab page, Tab parentTab) {
    if (auto *settings = dynamic_cast<SettingsPageLink *>(pageAt(page))) {
        settings->parentTab = parentTab;
    }
    selectTab(page);
}

void WindowController::proposeRecord(Tab page, Tab parentTab, const Dictionary &record) {
    openSettingsPage(page, parentTab);
    if (auto *records = dynamic_cast<RecordPageLink *>(pageAt(page))) {
        records->propose(record);
    }
}

void WindowController::showEvents(const EventQuery &query) {
    m_eventPage->setFilter(query);
    selectTab(Tab::kEvents);
}

void WindowController::selectTab(Tab page) {
    // The settings pages and the hosts have no entry of their own: they belong to where they were
    // opened.
    const auto *settings = dynamic_cast<SettingsPageLink *>(pageAt(page));
    switch (settings != nullptr ? settings->parentTab : page) {
        case Tab::kHome:
            ui->Home->setChecked(true);
            break;
        case Tab::kEvents:
            ui->Scan->setChecked(true);
            break;
        case Tab::kReports:
            ui->Reports->setChecked(true);
            break;
        default:
            ui->Tools->setChecked(true);
            break;
    }
    const int index = static_cast<int>(page);
    if (index == ui->tabView->currentIndex()) {
        return;
    }
    // Else the tab container would move it to the new page's first control; the pages choose.
    if (ui->tabView->isAncestorOf(focusWidget())) {
        ui->tabView->setFocus();
    }
    ui->tabView->setCurrentIndex(index);
}

QWidget *WindowController::pageAt(Tab page) const {
    return ui->tabView->widget(static_cast<int>(page));
}

EventPlace WindowController::setNotification(const EventFields &event) {
    return m_intake->setNotification(event);
}

void WindowController::removeNotification(const EventFields &announced) {
    m_intake->removeNotification(announced);
}

std::vector<LogExtent> WindowController::initializeLog() {
    ProgressWindow progress({.title = tr("Quorbel is starting"),
                             .work = tr("Loading the stored events"),
                             .accessibleName = tr("Stored events loaded")},
                            ProgressWindow::Unit::kBytes);
    return m_intake->initializeLog(
        [&progress](std::uint64_t read, std::uint64_t total) { progress.update(read, total); });
}

void WindowController::syslogNotify(const NotificationObserver::UserInfo &userInfo) {
    std::vector<std::pair<std::string_view, std::string_view>> others;
    const EventFields fields = eventFields(userInfo, others);
    const std::string_view type = typeOf(userInfo);
    if (type == "Set") {
        raiseAlerts(setNotification(fields), 1);
    } else if (type == "Remove") {
        removeNotification(fields);
    }
}

void WindowController::manyNotified(LoadedArrivals events) {
    const std::size_t count = events.events.size();
    raiseAlerts(m_intake->takeMany(std::move(events)), count);
}

void WindowController::raiseAlerts(const EventPlace &first, std::size_t count) {
    const AppState &state = m_delegate.state;
    const bool alertsAreOn = state.iPopupEvents > 0 || !state.popupSound.empty();
    if (!alertsAreOn || m_alertQueue == nullptr) {
        return;
    }
    for (EventId id = first.id; id < first.id + count; ++id) {
        m_alertQueue->append(Event(first.list, id));
    }
}

void WindowController::closeEvent(QCloseEvent *event) {
    event->accept();
    if (!m_isReopenable()) {
        endProgram();
    }
}

}  // namespace quorbel
