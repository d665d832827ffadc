#include "home/HomeView.h"

#include "common/SettingsDocument.h"
#include "core/AppDelegate.h"
#include "core/AppState.h"
#include "home/HomeCards.h"
#include "home/Rating.h"
#include "platform/ProcessTable.h"
#include "platform/gui/ContentArea.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"
#include "platform/gui/KnownText.h"
#include "platform/gui/QtText.h"
#include "ui_HomeView.h"

#include <QLabel>
#include <QScrollBar>

namespace quorbel {

namespace {

constexpr std::string_view kServiceProcess = "QuorbelSrv";
constexpr int kRatingImageSize = 56;
constexpr int kStatusImageSize = 20;
// Of the page, in a window of 900 by 650.
constexpr int kNarrow = 732;
constexpr int kLow = 622;

/// Assistive tools read a label's accessible name in place of its text, so it holds both what the
/// field means (the label's "caption", from the form) and what it says.
void setField(QLabel &label, const QString &text) {
    label.setText(text);
    label.setAccessibleName(label.property("caption").toString() + QStringLiteral(": ") + text);
}

/// Good, bad, or just not in use. The text beside the image says the same.
enum class Mood { kGood, kBad, kIdle };

void setStatusImage(QLabel &label, const QString &name, Mood mood) {
    QColor colour;
    if (mood != Mood::kIdle) {
        colour = mood == Mood::kGood ? QColor(0x2f, 0x9e, 0x4f) : QColor(0xd9, 0x3a, 0x3f);
    }
    setLabelIcon(label, lineIcon(name, colour), sizedToFont(kStatusImageSize));
}

}  // namespace

HomeView::HomeView(AppDelegate &delegate, QWidget *parent)
    : Page(parent), m_delegate(delegate), ui(std::make_unique<Ui::HomeView>()) {
    ui->setupUi(this);
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        const QString name = QStringLiteral("events") + toQString(kSeverityClasses[i].keyPart);
        m_counters[i].label = findChild<QLabel *>(name);
    }
    ui->eventsBar->setPage(this);
}

HomeView::~HomeView() = default;

void HomeView::setHostBoxes(QWidget &boxes) {
    ui->hostAreaLayout->addWidget(&boxes);
    ui->hostArea->show();
}

void HomeView::viewDidLoad() {
    setWhiteBackground();
    makeScrollable();
    setLabelIcon(*ui->statusVersionImage, lineIcon(QStringLiteral("version")),
                 sizedToFont(kStatusImageSize));
    setField(*ui->statusVersion, tr("Mac program %1").arg(QStringLiteral(QUORBEL_VERSION)));
    m_cards = std::make_unique<HomeCards>(
        m_delegate,
        HomeCards::Cards{ui->cardEmergency, ui->cardAlerting, ui->cardCritical, ui->cardError,
                         ui->cardWarning, ui->cardNotice, ui->cardInformation, ui->cardDebug,
                         ui->cardUnknown},
        *ui->chartLegend, *this);
    connect(m_cards.get(), &HomeCards::refreshDue, this,
            [this] { m_cards->refresh(m_severityStatus); });
    fit();
}

void HomeView::resizeEvent(QResizeEvent *event) {
    Page::resizeEvent(event);
    fit();
}

/// A small window has small cards.
void HomeView::fit() {
    if (m_cards) {
        m_cards->setCompact(width() < sizedToFont(kNarrow) || height() < sizedToFont(kLow));
    }
}

void HomeView::makeScrollable() {
    ContentArea &area = ContentArea::wrap(*this);
    // The keyboard has no control here that would bring the rest into sight.
    connect(area.verticalScrollBar(), &QScrollBar::rangeChanged, &area, [&area](int, int end) {
        area.setFocusPolicy(end > 0 ? Qt::StrongFocus : Qt::NoFocus);
    });
}

void HomeView::viewWillAppear() {
    setEventsStatus();
    setActionsStatus();
    setExportStatus();
    setMonitorStatus();
    m_cards->refresh(m_severityStatus);
}

void HomeView::setEventsStatus() {
    const std::int64_t rating = rateEvents(m_delegate.state);
    if (isRating(rating)) {
        m_severityStatus = static_cast<int>(rating);
    }
    showCounters();
    showRating();
    m_cards->noteArrival();
}

void HomeView::showCounters() {
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        CounterField &field = m_counters[i];
        const std::int64_t count = m_delegate.state.*kSeverityCounters[i];
        if (count != field.shown) {
            field.shown = count;
            setField(*field.label, QString::number(count));
        }
    }
}

void HomeView::showRating() {
    if (m_severityStatus == m_shownRating && devicePixelRatioF() == m_shownResolution) {
        return;
    }
    m_shownRating = m_severityStatus;
    m_shownResolution = devicePixelRatioF();
    const Rating &rating = kRatings.at(static_cast<std::size_t>(m_severityStatus));
    ui->eventsBox->setBorderColor(toQColor(rating.outerBorder));
    ui->eventsInnerBox->setBorderColor(toQColor(rating.innerBorder));
    setField(*ui->eventsTitle, tr(rating.title.data()));
    const QString image = toQString(rating.image);
    setLabelIcon(*ui->eventsImage, severityIcon(image), sizedToFont(kRatingImageSize));
    ui->eventsImage->setAccessibleName(knownName(image));
    ui->eventsBar->update();
}

void HomeView::setMonitorStatus() {
    const bool running = isProcessRunning(kServiceProcess);
    setField(*ui->statusMonitor, running ? tr("Running") : tr("Stopped"));
    setStatusImage(*ui->statusMonitorImage, QStringLiteral("monitor"),
                   running ? Mood::kGood : Mood::kBad);
}

void HomeView::setActionsStatus() {
    const auto settings = decodeSettings(AppDelegate::readSettings());
    const bool enabled = settings && !settingArray(*settings, "actionsArray").empty();
    setField(*ui->statusActions, enabled ? tr("Actions enabled") : tr("Do not use actions"));
    setStatusImage(*ui->statusActionsImage, QStringLiteral("actions"),
                   enabled ? Mood::kGood : Mood::kIdle);
}

void HomeView::setExportStatus() {
    const auto settings = decodeSettings(AppDelegate::readSettings());
    const bool enabled = settings && (settingInteger(*settings, "textInterval") > 0 ||
                                      settingInteger(*settings, "databaseInterval") > 0);
    setField(*ui->statusExport, enabled ? tr("Export enabled") : tr("Do not use export"));
    setStatusImage(*ui->statusExportImage, QStringLiteral("export"),
                   enabled ? Mood::kGood : Mood::kIdle);
}

}  // namespace quorbel
