#include "home/SeverityCard.h"

#include "common/Severity.h"
#include "home/HourChart.h"
#include "platform/gui/EventsText.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"
#include "platform/gui/KnownText.h"
#include "platform/gui/QtText.h"

#include <QBoxLayout>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QStyle>
#include <QStyleOption>
#include <QStylePainter>
#include <QToolTip>

#include <algorithm>

namespace quorbel {

namespace {

constexpr int kHeight = 94;
constexpr int kCompactHeight = 70;
constexpr int kLabelledHeight = 120;
constexpr int kMargin = 10;  // at the top
constexpr int kCompactMargin = 5;
constexpr int kSignSize = 16;
constexpr std::uint64_t kRounded = 100'000;  // counts from there on are

/// "817", "28.8 M".
QString dayText(std::uint64_t count) {
    if (count < kRounded) {
        return countText(static_cast<qint64>(count));
    }
    constexpr std::uint64_t kMillion = 1'000'000;
    const bool isLarge = count >= kMillion;
    const double unit = isLarge ? 1e6 : 1e3;
    const int decimals = isLarge ? 1 : 0;
    return QLocale().toString(static_cast<double>(count) / unit, 'f', decimals) +
           (isLarge ? QStringLiteral(" M") : QStringLiteral(" k"));
}

}  // namespace

SeverityCard::SeverityCard(QWidget *parent) : QAbstractButton(parent) {
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
}

void SeverityCard::complete(std::size_t severityClass) {
    m_class = severityClass;
    const QString part = toQString(kSeverityClasses.at(m_class).keyPart);
    auto *column = static_cast<QBoxLayout *>(layout());
    auto *head = new QHBoxLayout;
    column->insertLayout(0, head);
    QWidget *caption = column->itemAt(1)->widget();
    column->removeWidget(caption);
    m_sign = new QLabel(this);
    m_sign->setObjectName(QStringLiteral("sign") + part);
    m_sign->setAccessibleName(tr("Makes the rating severe"));
    setLabelIcon(*m_sign, severityIcon(QStringLiteral("Severe")), sizedToFont(kSignSize));
    m_sign->hide();
    m_day = new QLabel(this);
    m_day->setObjectName(QStringLiteral("day") + part);
    m_day->setProperty("role", QStringLiteral("small"));
    m_day->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    head->setSpacing(6);
    head->addWidget(caption);
    head->addWidget(m_sign);
    head->addStretch(1);
    head->addWidget(m_day);
    m_chart = new HourChart(this);
    m_chart->setObjectName(QStringLiteral("hours") + part);
    m_chart->setAccessibleName(tr("Hours"));
    column->addWidget(m_chart, 1);
    for (QLabel *label : findChildren<QLabel *>()) {
        label->setAttribute(Qt::WA_TransparentForMouseEvents);
    }
    setCompact(false);
    showTotal();
}

void SeverityCard::setCompact(bool isCompact) {
    m_isCompact = isCompact;
    m_day->setVisible(!isCompact);
    m_chart->setCompact(isCompact);
    QMargins margins = layout()->contentsMargins();
    margins.setTop(isCompact ? kCompactMargin : kMargin);
    layout()->setContentsMargins(margins);
    updateGeometry();
}

QSize SeverityCard::minimumSizeHint() const {
    const int least = sizedToFont(m_isCompact ? kCompactHeight : kHeight);
    return layout() == nullptr ? QSize() : layout()->minimumSize().expandedTo({0, least});
}

QSize SeverityCard::sizeHint() const {
    return layout() == nullptr ? QSize() : layout()->sizeHint().expandedTo(minimumSizeHint());
}

QString SeverityCard::name() const {
    return knownName(kSeverityClasses.at(m_class).label);
}

void SeverityCard::setHours(const HourCounts &counts) {
    m_chart->setCounts(counts);
    showTotal();
}

void SeverityCard::showTotal() {
    const std::uint64_t total = m_chart->counts().total();
    const QString text = tr("24 h: %1").arg(dayText(total));
    if (text != m_day->text()) {
        m_day->setText(text);
        m_day->setAccessibleName(
            tr("Last 24 hours: %1").arg(countText(static_cast<qint64>(total))));
    }
}

void SeverityCard::setSevere(bool isSevere) {
    m_chart->setSevere(isSevere);
    m_sign->setVisible(isSevere);
}

void SeverityCard::paintEvent(QPaintEvent * /*event*/) {
    QStyleOption option;
    option.initFrom(this);
    QStylePainter(this).drawPrimitive(QStyle::PE_Widget, option);
}

void SeverityCard::resizeEvent(QResizeEvent *event) {
    QAbstractButton::resizeEvent(event);
    if (m_chart != nullptr) {
        m_chart->setLabelled(height() >= sizedToFont(kLabelledHeight));
    }
}

std::optional<std::size_t> SeverityCard::columnAt(const QPoint &position) const {
    const QPoint place = m_chart->mapFrom(this, position);
    return place.y() < 0 ? std::nullopt : m_chart->columnAt(place.x());
}

void SeverityCard::mark(std::optional<std::size_t> column) {
    m_marked = column;
    m_chart->setMarked(column);
}

void SeverityCard::mouseMoveEvent(QMouseEvent *event) {
    QAbstractButton::mouseMoveEvent(event);
    mark(columnAt(event->position().toPoint()));
}

void SeverityCard::leaveEvent(QEvent *event) {
    QAbstractButton::leaveEvent(event);
    mark(std::nullopt);
}

void SeverityCard::focusOutEvent(QFocusEvent *event) {
    QAbstractButton::focusOutEvent(event);
    mark(std::nullopt);
}

bool SeverityCard::event(QEvent *event) {
    if (event->type() == QEvent::ToolTip) {
        const auto *help = static_cast<QHelpEvent *>(event);
        const auto column = columnAt(help->pos());
        const QRect place =
            column ? m_chart->columnRect(*column).translated(m_chart->mapTo(this, QPoint()))
                   : QRect();
        QToolTip::showText(help->globalPos(), tip(column), this, place);
        return true;
    }
    return QAbstractButton::event(event);
}

/// "14:00 to 15:00"; the hour that goes on has no end.
QString SeverityCard::hourText(std::size_t column, const QString &format) const {
    const int hour = m_chart->counts().clockHour(column);
    const auto at = [&format](int clock) { return format.arg(clock, 2, 10, QLatin1Char('0')); };
    return column + 1 == HourCounts::kColumns ? tr("%1 to now").arg(at(hour))
                                              : tr("%1 to %2").arg(at(hour), at((hour + 1) % 24));
}

QString SeverityCard::tip(std::optional<std::size_t> column) const {
    const QString click = tr("Click: show the %1 events").arg(name());
    const HourCounts &counts = m_chart->counts();
    const auto number = [](std::uint64_t count) { return countText(static_cast<qint64>(count)); };
    if (!column) {
        return tr("%1, last 24 hours: %2").arg(name(), number(counts.total())) + u'\n' + click;
    }
    return name() + QStringLiteral(", ") + hourText(*column, QStringLiteral("%1:00")) + u'\n' +
           tr("%1; the day before: %2")
               .arg(eventsText(counts.lastDay.at(*column)), number(counts.dayBefore.at(*column))) +
           u'\n' + click;
}

/// Reads an hour aloud, and shows what the pointer would.
void SeverityCard::tell(std::size_t column) {
    const HourCounts &counts = m_chart->counts();
    setAccessibleDescription(tr("%1: %2, day before %3")
                                 .arg(hourText(column, QStringLiteral("%1")),
                                      countText(static_cast<qint64>(counts.lastDay.at(column))),
                                      countText(static_cast<qint64>(counts.dayBefore.at(column)))));
    const QRect place = m_chart->columnRect(column);
    QToolTip::showText(m_chart->mapToGlobal(place.bottomLeft()), tip(column), this);
}

void SeverityCard::step(int columns) {
    constexpr auto kLast = static_cast<int>(HourCounts::kColumns) - 1;
    const int from = m_marked ? static_cast<int>(*m_marked) : kLast + (columns < 0 ? 1 : 0);
    mark(static_cast<std::size_t>(std::clamp(from + columns, 0, kLast)));
    tell(*m_marked);
}

void SeverityCard::keyPressEvent(QKeyEvent *event) {
    constexpr auto kColumns = static_cast<int>(HourCounts::kColumns);
    switch (event->key()) {
        case Qt::Key_Left:
            return step(-1);
        case Qt::Key_Right:
            return step(1);
        case Qt::Key_Home:
            return step(-kColumns);
        case Qt::Key_End:
            return step(kColumns);
        case Qt::Key_Return:
        case Qt::Key_Enter:
            return click();
        default:
            QAbstractButton::keyPressEvent(event);
    }
}

}  // namespace quorbel
