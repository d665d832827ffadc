#include "hosts/HostBoxes.h"

#include "hosts/HostPulse.h"
#include "hosts/HostTexts.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"
#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"
#include "ui_HostBoxes.h"

#include <QDateTime>
#include <QEvent>

#include <algorithm>

namespace quorbel {

namespace {

constexpr int kBoxHeight = 125;
constexpr int kSignSize = 16;
constexpr int kLongestLink = 170;

/// What a link says of a host, whose name may be long.
void setLink(QPushButton &link, const HostRow *row, const QString &text) {
    link.setVisible(row != nullptr);
    if (row == nullptr) {
        return;
    }
    const QString name = link.fontMetrics().elidedText(paintedRow(row->name), Qt::ElideMiddle,
                                                       sizedToFont(kLongestLink));
    link.setText(QString(text).replace(QLatin1String("%1"), name).replace(u'&', u"&&"_qs));
    link.setProperty("host", row->name);
    link.setToolTip(u"<p>%1</p>"_qs.arg(paintedRow(row->name).toHtmlEscaped()));
    link.setAccessibleName(QString(text).replace(QLatin1String("%1"), row->name));
}

}  // namespace

HostBoxes::HostBoxes(AppDelegate &delegate, QWidget *parent)
    : QWidget(parent),
      m_delegate(delegate),
      ui(std::make_unique<Ui::HostBoxes>()),
      m_pulse(new HostPulse(delegate.hosts, *this)) {
    ui->setupUi(this);
    if (isRightToLeft()) {
        const QMargins margins = ui->moreSilentLayout->contentsMargins();
        ui->moreSilentLayout->setContentsMargins(margins.right(), margins.top(), margins.left(),
                                                 margins.bottom());
    }
    ui->loudestBox->setFixedHeight(sizedToFont(kBoxHeight));
    ui->silentBox->setFixedHeight(sizedToFont(kBoxHeight));
    setLabelIcon(*ui->silentLinkSign, severityIcon(QStringLiteral("Moderate")),
                 sizedToFont(kSignSize));
    connect(m_pulse, &HostPulse::beat, this, &HostBoxes::refresh);
    connect(ui->allHosts, &QAbstractButton::clicked, this, &HostBoxes::openHosts);
    connect(ui->moreSilent, &QAbstractButton::clicked, this, &HostBoxes::openHosts);
    connect(ui->silentState, &QAbstractButton::clicked, this, &HostBoxes::openHosts);
    connect(ui->loudestHosts, &HostList::chosen, this, &HostBoxes::openEvents);
    connect(ui->silentHosts, &HostList::chosen, this, &HostBoxes::openEvents);
    for (QPushButton *link : {ui->loudestLink, ui->secondLink, ui->silentLink}) {
        connect(link, &QAbstractButton::clicked, this,
                [this, link] { openEvents(link->property("host").toString()); });
    }
}

HostBoxes::~HostBoxes() = default;

void HostBoxes::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    m_serviceWatch.emplace(m_delegate.service, [this] {
        if (isConnected() != m_wasConnected) {
            refresh();
        }
    });
    window()->installEventFilter(this);
    fitToWindow();
}

void HostBoxes::hideEvent(QHideEvent *event) {
    QWidget::hideEvent(event);
    m_serviceWatch.reset();
    window()->removeEventFilter(this);
}

void HostBoxes::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    fitLinks();
}

bool HostBoxes::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::Resize) {
        fitToWindow();
    }
    return QWidget::eventFilter(watched, event);
}

void HostBoxes::fitToWindow() {
    const QSize size = window()->size();
    const bool isSmall =
        size.width() < sizedToFont(kSmallWidth) || size.height() < sizedToFont(kSmallHeight);
    ui->boxes->setVisible(!isSmall);
    ui->links->setVisible(isSmall);
    fitLinks();
}

/// What there is no room for goes, the least important first.
void HostBoxes::fitLinks() {
    ui->secondLink->setVisible(ui->loudestHosts->rows().size() > 1);
    ui->loudestCaption->setVisible(true);
    ui->silentLinkSince->setVisible(m_overdue > 0);
    const QWidgetList parts{ui->secondLink, ui->loudestCaption, ui->silentLinkSince};
    for (QWidget *part : parts) {
        ui->linksLayout->invalidate();
        if (ui->linksLayout->sizeHint().width() > width()) {
            part->hide();
        }
    }
}

bool HostBoxes::isConnected() const {
    const auto outcome = m_delegate.service.outcome();
    return !outcome || *outcome == StatusOutcome::kTold || *outcome == StatusOutcome::kTooOld;
}

HostBoxes::Silence HostBoxes::silence() const {
    const std::int64_t now = m_pulse->now();
    const HostWatch &hosts = m_delegate.hosts;
    if (!isConnected()) {
        return {"monitor", false, tr("Cannot be told"), tr("not connected")};
    }
    if (hosts.history().watched().lastArrival() == 0) {
        return {"monitor", false, tr("No events yet"), {}};
    }
    if (const auto quiet = hosts.quietSince(now)) {
        return {"monitor", false, tr("Nothing from any host"), HostTexts::since(*quiet, now)};
    }
    const HostWatch::Summary summary = hosts.summary(now);
    const auto onTime = static_cast<qint64>(summary.regular - summary.overdue);
    if (summary.overdue > 0) {
        return {"check",
                true,
                onTime == 1
                    ? tr("1 other on time")
                    : tr("%1 others on time", nullptr, pluralNumber(onTime)).arg(countText(onTime)),
                {}};
    }
    if (summary.regular > 0) {
        return {
            "check", true, tr("No host is overdue"),
            onTime == 1
                ? tr("1 sends regularly")
                : tr("%1 send regularly", nullptr, pluralNumber(onTime)).arg(countText(onTime))};
    }
    if (summary.learnedFrom) {
        const QDate date = QDateTime::fromSecsSinceEpoch(*summary.learnedFrom).date();
        return {"calendar", false, tr("Learning the habits"),
                tr("tells from %1 on").arg(QLocale().toString(date, tr("d MMM", "date pattern")))};
    }
    return {"monitor", false, tr("Nobody is expected"), tr("no host sends regularly")};
}

void HostBoxes::refresh() {
    if (!isVisible() || m_delegate.hosts.isCounting()) {
        return;
    }
    m_wasConnected = isConnected();
    const auto rows = hostRows(m_delegate.hosts, m_delegate.state, m_pulse->now());
    m_lastDay = lastDayOf(rows);
    showLoudest(rows);
    showSilent(isConnected() ? overdueHosts(rows) : std::vector<HostRow>());
    showLinks();
}

/// Of everybody; where a clock was far ahead for a while, less is known of all than of each.
std::uint64_t HostBoxes::lastDayOf(const std::vector<HostRow> &rows) const {
    const LocalClock::Hour hour = m_delegate.hosts.hourOf(m_pulse->now());
    std::uint64_t sum = 0;
    for (const HostRow &row : rows) {
        sum += row.lastDay;
    }
    return std::max(sum, m_delegate.hosts.history().all().lastDay(hour));
}

void HostBoxes::showLoudest(const std::vector<HostRow> &rows) {
    ui->loudestHosts->setHint(rows.empty() ? tr("No events yet")
                                           : tr("No events in the last 24 hours"));
    ui->loudestHosts->show(rows, m_lastDay);
}

void HostBoxes::showSilent(std::vector<HostRow> overdue) {
    m_overdue = overdue.size();
    const Silence state = silence();
    const std::size_t more = m_overdue - std::min(m_overdue, SilentHosts::kMost);
    ui->silentHosts->show(std::move(overdue), m_pulse->now());
    ui->silentHosts->setVisible(m_overdue > 0);
    ui->silentLine->setVisible(m_overdue > 0);
    ui->moreSilent->setVisible(more > 0);
    ui->moreSilent->setText(tr("and %1 more").arg(countText(static_cast<qint64>(more))));
    ui->moreSilent->setAccessibleName(ui->moreSilent->text());
    ui->silenceRow->setVisible(more == 0);
    const QColor good(0x2f, 0x9e, 0x4f);
    setLabelIcon(*ui->silenceSign,
                 lineIcon(QString::fromLatin1(state.icon), state.isGood ? good : QColor()),
                 sizedToFont(20));
    ui->silenceText->setText(state.text);
    ui->silenceDetail->setText(state.detail);
    ui->silenceDetail->setVisible(!state.detail.isEmpty());
    // The links say it in one text.
    ui->silentState->setText(state.detail.isEmpty() ? state.text
                                                    : state.text + u", "_qs + state.detail);
}

void HostBoxes::showLinks() {
    const auto &loudest = ui->loudestHosts->rows();
    const auto shareText = [this](const HostRow &row) {
        return u"%1 "_qs + HostTexts::roundShare(static_cast<double>(row.lastDay) /
                                                 static_cast<double>(m_lastDay));
    };
    const auto setShare = [&](QPushButton &link, std::size_t place) {
        const HostRow *row = place < loudest.size() ? &loudest[place] : nullptr;
        setLink(link, row, row == nullptr ? QString() : shareText(*row));
    };
    setShare(*ui->loudestLink, 0);
    setShare(*ui->secondLink, 1);
    ui->loudestCaption->setText(loudest.empty() ? tr("No events in the last 24 hours")
                                                : tr("Loudest"));
    const HostRow *silent = m_overdue > 0 ? &ui->silentHosts->rows().front() : nullptr;
    setLink(*ui->silentLink, silent, u"%1"_qs);
    ui->silentLinkSign->setVisible(silent != nullptr);
    if (silent != nullptr) {
        ui->silentLinkSince->setText(HostTexts::since(silent->last, m_pulse->now()));
        const auto more = static_cast<qint64>(m_overdue) - 1;
        ui->silentState->setText(tr("and %1 more").arg(countText(more)));
    }
    ui->silentState->setVisible(silent == nullptr || m_overdue > 1);
    ui->silentState->setAccessibleName(ui->silentState->text());
    fitLinks();
}

void HostBoxes::openHosts() {
    if (MainWindowLink *window = m_delegate.mainWindow()) {
        window->openSettingsPage(Tab::kHosts, Tab::kHome);
    }
}

void HostBoxes::openEvents(const QString &host) {
    if (MainWindowLink *window = m_delegate.mainWindow()) {
        window->showEvents(eventsOf(host, m_delegate.hosts.history()));
    }
}

}  // namespace quorbel
