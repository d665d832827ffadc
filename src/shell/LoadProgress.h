#pragma once

#include <QElapsedTimer>
#include <QLabel>
#include <QProgressBar>
#include <QWidget>

#include <cstdint>
#include <memory>

namespace quorbel {

/// Tells how far the start-up load is, in a small window that appears when it takes longer than a
/// moment and goes with the object. The load runs on the main thread; its input waits meanwhile.
class LoadProgress {
public:
    static constexpr qint64 kPatienceMs = 500;

    LoadProgress();
    ~LoadProgress();
    LoadProgress(const LoadProgress &) = delete;
    LoadProgress &operator=(const LoadProgress &) = delete;

    void update(std::uint64_t bytesRead, std::uint64_t bytesInAll);

private:
    void open();

    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sincePaint;
    std::unique_ptr<QWidget> m_window;  // owns the two below
    QProgressBar *m_bar = nullptr;
    QLabel *m_amount = nullptr;
};

}  // namespace quorbel
