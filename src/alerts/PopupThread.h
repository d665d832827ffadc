#pragma once

#include "alerts/AlertDecision.h"
#include "alerts/PopupCondition.h"
#include "alerts/PopupQueue.h"
#include "core/AlertQueueLink.h"
#include "core/AppState.h"
#include "core/Event.h"
#include "platform/Mutex.h"

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace quorbel {

class AppDelegate;
class Storyboard;

/// The alert worker: takes new events one at a time, oldest first, plays the alert sound and shows
/// the popup where the settings ask for it, and waits until that popup has closed.
///
/// Made, started and destroyed on the main thread, which also makes the popups. Refers to its
/// arguments, which outlive it; the event list that its events belong to must outlive it as well.
class PopupThread final : public AlertQueueLink, private PopupQueue {
public:
    /// Starts a sound file and returns at once; called on the main thread.
    using PlaySound = std::function<void(const std::string &path)>;

    PopupThread(AppDelegate &delegate, const Storyboard &storyboard, PlaySound playSound);
    /// Stops the worker at once, with the popup and the event sheets that came of it. Events that
    /// still wait are dropped.
    ~PopupThread() override;
    PopupThread(const PopupThread &) = delete;
    PopupThread &operator=(const PopupThread &) = delete;

    /// Starts run() on a thread of its own. Once.
    void start();
    /// Whether run() has made popupArray. Of any thread.
    [[nodiscard]] bool takesEvents() const;
    /// Adds an event to popupArray, which grows as it must; dropped while run() has not made that
    /// yet.
    void append(Event event) override;
    /// The thread's body; returns when the object is being destroyed.
    void run();

private:
    /// What the worker needs of an event, beside the event, which only the main thread may touch:
    /// the worker only moves it, and hands it back. Small, because a million may wait.
    struct Entry {
        CountedClasses classes;
        Event event;
    };

    // On the worker.
    void handleNextEvent();
    bool pause();
    void showAndWait(std::int64_t popupTime, std::unique_ptr<Event> event);

    // On the main thread.
    std::size_t waitingPopups() override;
    void skipAll() override;
    void dropSome();
    /// Sees to it that `condition` is signalled when the popup ends, or at once if none can be
    /// made.
    void makePopup(std::int64_t popupTime, Event event, std::shared_ptr<PopupCondition> condition);
    static void displayAlert(QWidget &popupWindow);

    AppDelegate &m_delegate;
    Mutex &m_alertLock;  ///< the delegate's
    const Storyboard &m_storyboard;
    PlaySound m_playSound;
    QPointer<QWidget> m_popup;
    std::vector<QPointer<QWidget>> m_eventSheets;

    std::optional<std::deque<Entry>> popupArray GUARDED_BY(m_alertLock);
    /// How many of them count under each set of classes.
    std::map<unsigned long, std::size_t> m_waiting GUARDED_BY(m_alertLock);
    bool m_stopping GUARDED_BY(m_alertLock) = false;
    /// What the worker waits for, or waited for last.
    std::shared_ptr<PopupCondition> m_popupEnd GUARDED_BY(m_alertLock);
    Condition m_wake;  ///< ends its pause

    std::deque<Entry> m_skipped;  ///< what is left of them; the main thread's
    QTimer m_drop;

    std::thread m_thread;
    QObject m_receiver;  ///< of what the worker posts to the main thread; what it has not got ends
                         ///< with it
};

}  // namespace quorbel
