#include "events/HoldButton.h"

#include "platform/gui/Icons.h"
#include "platform/gui/QtText.h"

#include <QShortcut>
#include <QSignalBlocker>
#include <QStyleOptionButton>
#include <QStylePainter>

#include <utility>

namespace quorbel {

namespace {

const QKeySequence kShortcut(QStringLiteral("Ctrl+H"));

QString newEvents(std::size_t count) {
    const auto number = static_cast<qint64>(count);
    return count == 1 ? HoldButton::tr("1 new event")
                      : HoldButton::tr("%1 new events", nullptr, pluralNumber(number))
                            .arg(countText(number));
}

QString removals(std::size_t count) {
    const auto number = static_cast<qint64>(count);
    return count == 1 ? HoldButton::tr("1 removal")
                      : HoldButton::tr("%1 removals", nullptr, pluralNumber(number))
                            .arg(countText(number));
}

QString briefly(std::size_t arrived, std::size_t removed) {
    return arrived > 0 || removed == 0
               ? HoldButton::tr("%1 new").arg(shortCountText(static_cast<qint64>(arrived)))
               : HoldButton::tr("%1 removed").arg(shortCountText(static_cast<qint64>(removed)));
}

}  // namespace

HoldButton::HoldButton(QWidget *parent)
    : QPushButton(parent),
      m_pause(lineIcon(QStringLiteral("pause"))),
      m_play(lineIcon(QStringLiteral("play"))) {
    setCheckable(true);
    setFocusPolicy(Qt::TabFocus);  // a click leaves the keyboard with the table
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAccessibleName(tr("Hold new events"));
    // Not the button's own, which a change of its text takes away and which works with a delay.
    new QShortcut(kShortcut, this, this, [this] { toggle(); });
    connect(this, &QAbstractButton::toggled, this, &HoldButton::turn);
    connect(&m_timer, &QTimer::timeout, this, &HoldButton::handOnSome);
}

HoldButton::~HoldButton() {
    if (m_hold != nullptr) {
        m_hold->removeObserver(*this);
    }
}

void HoldButton::attach(EventHold &hold, EventListPageLink &page) {
    m_hold = &hold;
    m_page = &page;
    m_hold->addObserver(*this);
    showState();
    turn(isChecked());
}

void HoldButton::turn(bool on) {
    m_hold->setOn(on);
    if (on) {
        m_timer.stop();
    } else {
        m_timer.start(std::chrono::milliseconds::zero());
    }
}

void HoldButton::handOnSome() {
    m_hold->release(kSlice, *m_page);
    if (!m_hold->delays()) {
        m_timer.stop();
    }
}

void HoldButton::holdChanged() {
    // Thousands of events may arrive between two looks at it.
    if (!std::exchange(m_showIsDue, true)) {
        QMetaObject::invokeMethod(this, &HoldButton::showState, Qt::QueuedConnection);
    }
}

QString HoldButton::stateText() const {
    if (!m_hold->delays()) {
        return {};
    }
    const bool nothingWaits = m_hold->arrivals() + m_hold->removals() == 0;
    QString waiting = nothingWaits ? QString() : briefly(m_hold->arrivals(), m_hold->removals());
    if (!m_hold->isOn()) {
        return waiting;
    }
    return nothingWaits ? tr("Held") : tr("Held: %1").arg(waiting);
}

QString HoldButton::waitingText() const {
    QString arrived = m_hold->arrivals() > 0 ? newEvents(m_hold->arrivals()) : QString();
    if (m_hold->removals() == 0) {
        return arrived;
    }
    const QString removed = removals(m_hold->removals());
    return arrived.isEmpty() ? removed : tr("%1 and %2").arg(arrived, removed);
}

void HoldButton::showState() {
    m_showIsDue = false;
    const QSignalBlocker blocker(this);
    setChecked(m_hold->isOn());
    const QString waiting = waitingText();
    setIcon(m_hold->isOn() ? m_play : m_pause);
    setText(stateText());
    QString tip = tr("Hold the list as it is while you read: new events wait");
    if (m_hold->isOn()) {
        tip = waiting.isEmpty() ? tr("The list is held; nothing new so far")
                                : tr("The list is held; not in it yet: %1").arg(waiting);
    } else if (!waiting.isEmpty()) {
        tip = tr("Not in the list yet: %1").arg(waiting);
    }
    tip += QStringLiteral(" (%1)").arg(kShortcut.toString(QKeySequence::NativeText));
    setAccessibleDescription(tip);
    setToolTip(tip);
    setMaximumWidth(QPushButton::sizeHint().width());
    updateGeometry();
}

QSize HoldButton::sizeHint() const {
    const QSize full = QPushButton::sizeHint();
    return {full.width() - fontMetrics().horizontalAdvance(text()), full.height()};
}

QString HoldButton::fittingText() const {
    const int room = width() - sizeHint().width();
    const QString number = text().mid(text().indexOf(QLatin1Char(':')) + 1).trimmed();
    for (const QString &fitting : {text(), number, number.section(QLatin1Char(' '), 0, 0)}) {
        if (fontMetrics().horizontalAdvance(fitting) <= room) {
            return fitting;
        }
    }
    return {};
}

void HoldButton::paintEvent(QPaintEvent * /*event*/) {
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text = fittingText();
    painter.drawControl(QStyle::CE_PushButton, option);
}

}  // namespace quorbel
