#include "platform/gui/ProgressWindow.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QLocale>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace quorbel {

namespace {

constexpr qint64 kPaintIntervalMs = 50;
constexpr int kSteps = 1000;

}  // namespace

ProgressWindow::ProgressWindow(Texts texts, Unit unit, QWidget *parent)
    : m_texts(std::move(texts)), m_unit(unit), m_parent(parent) {
    m_sinceStart.start();
    m_sincePaint.start();
}

ProgressWindow::~ProgressWindow() = default;

void ProgressWindow::update(std::uint64_t done, std::uint64_t inAll) {
    if (m_sinceStart.elapsed() < kPatienceMs || m_sincePaint.elapsed() < kPaintIntervalMs) {
        return;
    }
    if (!m_window) {
        open();
    }
    // A file can grow while it is read.
    const auto total = std::max<std::uint64_t>({done, inAll, 1});
    const double part = static_cast<double>(done) / static_cast<double>(total);
    m_bar->setValue(static_cast<int>(part * kSteps));
    m_amount->setText(QStringLiteral("%1 of %2").arg(amount(done), amount(total)));
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents |
                                    QEventLoop::ExcludeSocketNotifiers);
    m_sincePaint.start();
}

QString ProgressWindow::amount(std::uint64_t number) const {
    const auto value = static_cast<qint64>(number);
    return m_unit == Unit::kBytes ? QLocale().formattedDataSize(value, 0)
                                  : QLocale().toString(value);
}

void ProgressWindow::open() {
    m_window =
        std::make_unique<QWidget>(m_parent, (m_parent == nullptr ? Qt::Window : Qt::Dialog) |
                                                Qt::CustomizeWindowHint | Qt::WindowTitleHint);
    m_window->setObjectName(QStringLiteral("progressWindow"));
    m_window->setWindowTitle(m_texts.title);
    auto *layout = new QVBoxLayout(m_window.get());
    layout->setContentsMargins(24, 20, 24, 20);
    layout->setSpacing(10);
    layout->addWidget(new QLabel(m_texts.work));
    m_bar = new QProgressBar;
    m_bar->setAccessibleName(m_texts.accessibleName);
    m_bar->setRange(0, kSteps);
    m_bar->setTextVisible(false);
    m_bar->setMinimumWidth(320);
    layout->addWidget(m_bar);
    m_amount = new QLabel;
    layout->addWidget(m_amount);
    m_window->show();
}

}  // namespace quorbel
