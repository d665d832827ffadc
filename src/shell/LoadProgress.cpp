#include "shell/LoadProgress.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QLocale>
#include <QVBoxLayout>

#include <algorithm>

namespace quorbel {

namespace {

constexpr qint64 kPaintIntervalMs = 50;
constexpr int kSteps = 1000;

}  // namespace

LoadProgress::LoadProgress() {
    m_sinceStart.start();
    m_sincePaint.start();
}

LoadProgress::~LoadProgress() = default;

void LoadProgress::update(std::uint64_t bytesRead, std::uint64_t bytesInAll) {
    if (m_sinceStart.elapsed() < kPatienceMs || m_sincePaint.elapsed() < kPaintIntervalMs) {
        return;
    }
    if (!m_window) {
        open();
    }
    // A file can grow while it is read.
    const auto total = std::max<std::uint64_t>({bytesRead, bytesInAll, 1});
    const double part = static_cast<double>(bytesRead) / static_cast<double>(total);
    m_bar->setValue(static_cast<int>(part * kSteps));
    const auto size = [](std::uint64_t bytes) {
        return QLocale().formattedDataSize(static_cast<qint64>(bytes), 0);
    };
    m_amount->setText(QStringLiteral("%1 of %2").arg(size(bytesRead), size(total)));
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents |
                                    QEventLoop::ExcludeSocketNotifiers);
    m_sincePaint.start();
}

void LoadProgress::open() {
    m_window = std::make_unique<QWidget>(
        nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint);
    m_window->setObjectName(QStringLiteral("loadProgress"));
    m_window->setWindowTitle(QStringLiteral("Quorbel is starting"));
    auto *layout = new QVBoxLayout(m_window.get());
    layout->setContentsMargins(24, 20, 24, 20);
    layout->setSpacing(10);
    layout->addWidget(new QLabel(QStringLiteral("Loading the stored events")));
    m_bar = new QProgressBar;
    m_bar->setAccessibleName(QStringLiteral("Stored events loaded"));
    m_bar->setRange(0, kSteps);
    m_bar->setTextVisible(false);
    m_bar->setMinimumWidth(320);
    layout->addWidget(m_bar);
    m_amount = new QLabel;
    layout->addWidget(m_amount);
    m_window->show();
}

}  // namespace quorbel
