#pragma once

#include "platform/UniqueFd.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <pthread.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace quorbel::soak {

/// How long the event loop of the thread that made it takes for a turn, as its user notices it: the
/// time between two beats of a timer. Time in which the thread could have run, but others had the
/// processor, does not count. One watch a program.
class StallWatch : public QObject {
    Q_OBJECT

public:
    struct Stall {
        double milliseconds = 0;           ///< that the thread ran or waited for something
        double processor = 0;              ///< of these it ran so many
        double crowded = 0;                ///< so many more it waited for a processor
        QString doing;                     ///< what had been begun last
        double at = 0;                     ///< seconds since the watch began
        std::vector<std::string> calls{};  ///< where the thread was a while after it began
    };

    StallWatch();
    ~StallWatch() override;
    StallWatch(const StallWatch &) = delete;
    StallWatch &operator=(const StallWatch &) = delete;

    /// It watches from when it was made on. What was found stays.
    void start();
    void stop();
    /// What the thread is about to do.
    void setDoing(const QString &what) { m_doing = what; }
    [[nodiscard]] const QString &doing() const { return m_doing; }
    /// The longest ones, the longest first.
    [[nodiscard]] const std::vector<Stall> &longest() const { return m_longest; }

private:
    struct Moment {
        double wall = 0;
        double processor = 0;
        double crowded = 0;
        double late = 0;
    };

    [[nodiscard]] Moment now() const;
    void beat();
    void watch(pthread_t watched);
    void keep(const Stall &stall);

    const UniqueFd m_schedule;
    QElapsedTimer m_clock;
    QTimer m_timer;
    Moment m_last;
    QString m_doing;
    std::vector<Stall> m_longest;
    std::atomic<bool> m_isOn = false;
    std::atomic<bool> m_isDone = false;
    std::atomic<unsigned> m_beats = 0;
    std::atomic<double> m_late = 0;  ///< milliseconds that the other thread woke up too late in all
    std::thread m_looking;           // at the thread while it does not beat
};

/// One line for people, and one for each call.
QString describe(const StallWatch::Stall &stall);

}  // namespace quorbel::soak
