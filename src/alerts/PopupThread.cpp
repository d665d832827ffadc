#include "alerts/PopupThread.h"

#include "alerts/PopupView.h"
#include "alerts/PopupWindow.h"
#include "common/Severity.h"
#include "core/AppDelegate.h"
#include "platform/gui/Storyboard.h"

#include <QMetaObject>

#include <algorithm>
#include <chrono>
#include <utility>

namespace quorbel {

namespace {

constexpr std::chrono::milliseconds kPause{200};
constexpr std::size_t kDroppedAtOnce = 10'000;  // a few milliseconds

}  // namespace

PopupThread::PopupThread(AppDelegate &delegate, const Storyboard &storyboard, PlaySound playSound)
    : m_delegate(delegate),
      m_alertLock(delegate.alertLock()),
      m_storyboard(storyboard),
      m_playSound(std::move(playSound)) {
    QObject::connect(&m_drop, &QTimer::timeout, &m_receiver, [this] { dropSome(); });
}

PopupThread::~PopupThread() {
    {
        const MutexLock lock(m_alertLock);
        m_stopping = true;
        m_wake.notifyAll();
        if (m_popupEnd) {
            m_popupEnd->signal();
        }
    }
    delete m_popup;
    for (const QPointer<QWidget> &sheet : m_eventSheets) {
        delete sheet;
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void PopupThread::start() {
    m_thread = std::thread(&PopupThread::run, this);
}

bool PopupThread::takesEvents() const {
    const MutexLock lock(m_alertLock);
    return popupArray.has_value();
}

void PopupThread::append(Event event) {
    const CountedClasses classes = classifyPriority(event.value("Priority").value_or("")).counted;
    const MutexLock lock(m_alertLock);
    if (popupArray) {
        popupArray->push_back({classes, std::move(event)});
        ++m_waiting[classes.to_ulong()];
    }
}

void PopupThread::run() {
    {
        const MutexLock lock(m_alertLock);
        popupArray.emplace();
    }
    do {
        handleNextEvent();
    } while (pause());
}

bool PopupThread::pause() {
    MutexLock lock(m_alertLock);
    return !m_wake.waitFor(lock, kPause, [this]() REQUIRES(m_alertLock) { return m_stopping; });
}

void PopupThread::handleNextEvent() {
    std::optional<Entry> next;
    AlertSettings settings;
    {
        const MutexLock lock(m_alertLock);
        if (popupArray->empty()) {
            return;
        }
        next.emplace(std::move(popupArray->front()));
        popupArray->pop_front();
        --m_waiting[next->classes.to_ulong()];
        settings = static_cast<const AlertSettings &>(m_delegate.state);
    }
    // By pointer: nothing on the way to the main thread can copy it.
    auto event = std::make_unique<Event>(std::move(next->event));
    if (isSoundWanted(next->classes, settings)) {
        QMetaObject::invokeMethod(
            &m_receiver, [this, path = settings.popupSound] { m_playSound(path); },
            Qt::QueuedConnection);
    }
    if (isPopupWanted(next->classes, settings)) {
        showAndWait(settings.iPopupEvents, std::move(event));
    } else {
        // Its end belongs to the main thread.
        QMetaObject::invokeMethod(
            &m_receiver, [event = std::move(event)] {}, Qt::QueuedConnection);
    }
}

void PopupThread::showAndWait(std::int64_t popupTime, std::unique_ptr<Event> event) {
    const auto condition = std::make_shared<PopupCondition>();
    {
        const MutexLock lock(m_alertLock);
        m_popupEnd = condition;
        if (m_stopping) {
            condition->signal();
        }
    }
    // Also while it stops: the event's end belongs to the main thread.
    QMetaObject::invokeMethod(
        &m_receiver,
        [this, popupTime, condition, event = std::move(event)] {
            makePopup(popupTime, std::move(*event), condition);
        },
        Qt::QueuedConnection);
    condition->wait();
}

void PopupThread::makePopup(std::int64_t popupTime, Event event,
                            std::shared_ptr<PopupCondition> condition) {
    auto controller = m_storyboard.instantiate(QStringLiteral("popupWindow"));
    auto *window = dynamic_cast<PopupWindow *>(controller.get());
    if (window == nullptr) {
        condition->signal();
        return;
    }
    m_popup = controller.release();
    PopupView &view = window->contentView();
    view.popupTime = popupTime;
    view.popupDict = std::move(event);
    view.setCondition(std::move(condition));
    view.setQueue(this);
    QObject::connect(&view, &PopupView::eventSheetOpened, &m_receiver, [this](QWidget *sheet) {
        std::erase_if(m_eventSheets, [](const auto &closed) { return closed.isNull(); });
        m_eventSheets.emplace_back(sheet);
    });
    displayAlert(*window);
}

std::size_t PopupThread::waitingPopups() {
    const MutexLock lock(m_alertLock);
    const AlertSettings &settings = m_delegate.state;
    std::size_t count = 0;
    for (const auto &[classes, waiting] : m_waiting) {
        count += waiting > 0 && isPopupWanted(CountedClasses(classes), settings) ? waiting : 0;
    }
    return count;
}

void PopupThread::skipAll() {
    std::deque<Entry> skipped;
    {
        const MutexLock lock(m_alertLock);
        m_waiting.clear();
        if (popupArray) {
            popupArray->swap(skipped);
        }
    }
    for (Entry &entry : m_skipped) {
        skipped.push_back(std::move(entry));
    }
    m_skipped = std::move(skipped);
    m_drop.start(0);
}

/// Letting go of a million events takes a while, in which the window would not answer.
void PopupThread::dropSome() {
    const std::size_t left = m_skipped.size() - std::min(m_skipped.size(), kDroppedAtOnce);
    while (m_skipped.size() > left) {
        m_skipped.pop_back();
    }
    if (left == 0) {
        m_drop.stop();
    }
}

void PopupThread::displayAlert(QWidget &popupWindow) {
    popupWindow.show();
    popupWindow.raise();
}

}  // namespace quorbel
