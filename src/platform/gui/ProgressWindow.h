#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QProgressBar>
#include <QString>
#include <QWidget>

#include <cstdint>
#include <memory>

namespace quorbel {

/// Tells how far a piece of work on the main thread is, in a small window that appears when the
/// work takes longer than a moment and goes with the object.
///
/// update() runs the event loop for a moment now and then, so that the windows are painted, also
/// before the small one appears. The user's input waits until the work is done, but timers, queued
/// calls and sockets are served: events are listed and removed meanwhile, and row numbers change;
/// the program may be told to end. Where cancelling is offered, the small window takes input, and
/// it alone.
class ProgressWindow {
    Q_DECLARE_TR_FUNCTIONS(quorbel::ProgressWindow)

public:
    static constexpr qint64 kPatienceMs = 500;

    enum class Unit { kBytes, kRows };
    enum class Cancel { kNotOffered, kOffered };

    struct Texts {
        QString title;
        QString work;            ///< what is being done
        QString accessibleName;  ///< of the bar
    };

    /// `parent`, if any, is the window that it stands over; it outlives this object.
    ProgressWindow(Texts texts, Unit unit, QWidget *parent = nullptr,
                   Cancel cancel = Cancel::kNotOffered);
    ~ProgressWindow();
    ProgressWindow(const ProgressWindow &) = delete;
    ProgressWindow &operator=(const ProgressWindow &) = delete;

    /// How long work goes on before its window appears; kPatienceMs unless this is called. For
    /// tests, which need no long work then. Main thread only.
    static void setPatienceMs(qint64 patience);

    /// False once the user has cancelled the work: by the button, the Escape key, or by closing the
    /// small window; and once the program is to end, offered or not.
    bool update(std::uint64_t done, std::uint64_t inAll);

private:
    void open();
    void show(std::uint64_t done, std::uint64_t inAll);
    void turn();
    void addCancel();
    [[nodiscard]] QString amount(std::uint64_t number) const;

    Texts m_texts;
    Unit m_unit;
    QWidget *m_parent;
    Cancel m_cancel;
    bool m_isCancelled = false;
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceTurn;          // of the event loop
    std::unique_ptr<QWidget> m_window;  // owns the two below
    QProgressBar *m_bar = nullptr;
    QLabel *m_amount = nullptr;
};

}  // namespace quorbel
