#include "platform/gui/ProgressWindow.h"

#include "platform/gui/ProgramEnd.h"
#include "platform/gui/QtText.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QEventLoop>
#include <QKeyEvent>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>
#include <utility>

namespace quorbel {

namespace {

constexpr qint64 kTurnIntervalMs = 50;
constexpr int kSteps = 1000;

qint64 patienceMs = ProgressWindow::kPatienceMs;

class Panel : public QWidget {
public:
    Panel(std::function<void()> onCancel, QWidget *parent, Qt::WindowFlags flags)
        : QWidget(parent, flags), m_onCancel(std::move(onCancel)) {}

protected:
    void keyPressEvent(QKeyEvent *event) override {
        if (event->matches(QKeySequence::Cancel)) {
            m_onCancel();
        } else {
            QWidget::keyPressEvent(event);
        }
    }
    // Not refused: that would keep the program from ending, too.
    void closeEvent(QCloseEvent *event) override {
        m_onCancel();
        QWidget::closeEvent(event);
    }

private:
    std::function<void()> m_onCancel;
};

}  // namespace

ProgressWindow::ProgressWindow(Texts texts, Unit unit, QWidget *parent, Cancel cancel)
    : m_texts(std::move(texts)), m_unit(unit), m_parent(parent), m_cancel(cancel) {
    m_sinceStart.start();
    m_sinceTurn.start();
}

void ProgressWindow::setPatienceMs(qint64 patience) {
    patienceMs = patience;
}

ProgressWindow::~ProgressWindow() = default;

bool ProgressWindow::update(std::uint64_t done, std::uint64_t inAll) {
    const bool isDue = !m_window && m_sinceStart.elapsed() >= patienceMs;
    if (isDue) {
        open();
    }
    if (isDue || m_sinceTurn.elapsed() >= kTurnIntervalMs) {
        show(done, inAll);
        turn();
    }
    return !m_isCancelled && !isProgramEnding();
}

void ProgressWindow::show(std::uint64_t done, std::uint64_t inAll) {
    if (!m_window) {
        return;
    }
    // A file can grow while it is read.
    const auto total = std::max<std::uint64_t>({done, inAll, 1});
    const double part = static_cast<double>(done) / static_cast<double>(total);
    m_bar->setValue(static_cast<int>(part * kSteps));
    m_amount->setText(tr("%1 of %2").arg(amount(done), amount(total)));
}

void ProgressWindow::turn() {
    QEventLoop::ProcessEventsFlags events = QEventLoop::AllEvents;
    events.setFlag(QEventLoop::ExcludeUserInputEvents,
                   !m_window || m_cancel == Cancel::kNotOffered);
    QCoreApplication::processEvents(events);
    m_sinceTurn.start();
}

QString ProgressWindow::amount(std::uint64_t number) const {
    const auto value = static_cast<qint64>(number);
    return m_unit == Unit::kBytes ? QLocale().formattedDataSize(value, 0) : countText(value);
}

void ProgressWindow::open() {
    m_window =
        std::make_unique<Panel>([this] { m_isCancelled = m_cancel == Cancel::kOffered; }, m_parent,
                                (m_parent == nullptr ? Qt::Window : Qt::Dialog) |
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
    if (m_cancel == Cancel::kOffered) {
        addCancel();
    }
    m_window->show();
}

void ProgressWindow::addCancel() {
    // No other window takes input, as none does without a button.
    m_window->setWindowModality(Qt::ApplicationModal);
    auto *button = new QPushButton(tr("Cancel"));
    button->setObjectName(QStringLiteral("onCancel"));
    button->setAccessibleName(button->text());
    static_cast<QVBoxLayout *>(m_window->layout())->addWidget(button, 0, Qt::AlignRight);
    QObject::connect(button, &QAbstractButton::clicked, m_window.get(),
                     [this] { m_isCancelled = true; });
    button->setFocus();
}

}  // namespace quorbel
