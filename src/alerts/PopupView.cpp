#include "alerts/PopupView.h"

#include "alerts/PopupDismissal.h"
#include "alerts/PopupHold.h"
#include "alerts/PopupQueue.h"
#include "common/Severity.h"
#include "core/PageLinks.h"
#include "platform/Preferences.h"
#include "platform/gui/Icons.h"
#include "platform/gui/KnownText.h"
#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"
#include "platform/gui/Sheet.h"
#include "platform/gui/Storyboard.h"
#include "ui_PopupView.h"

#include <QDateTime>
#include <QEasingCurve>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>

namespace quorbel {

namespace {

constexpr std::chrono::milliseconds kSlide{1000};
constexpr std::chrono::milliseconds kRecount{250};
constexpr int kLeastTimeLeft = 1000;  // in milliseconds, once it is not held open any more
constexpr int kImageSize = 40;

SeverityLevels preferredLevels() {
    SeverityLevels levels;
    // In this sense by design: the defaults apply where the name is present.
    const bool useDefaults = preference("AppName").has_value();
    for (std::size_t i = 0; i < kSeverityClassCount; ++i) {
        const SeverityClass &severity = kSeverityClasses[i];
        levels.*kSeverityLevels[i] =
            useDefaults ? severity.defaultLevel
                        : integerPreference("severity" + std::string(severity.keyPart));
    }
    return levels;
}

/// The severity's part of a priority: what follows the first point, unless that comes first.
std::string_view headerOf(std::string_view priority) {
    const std::size_t point = priority.find('.');
    return point == 0 || point == std::string_view::npos ? priority : priority.substr(point + 1);
}

/// Seconds as a timer's interval, which ends after 24 days.
int timerInterval(std::int64_t seconds) {
    constexpr std::int64_t kLongest = std::numeric_limits<int>::max() / 1000;
    return static_cast<int>(std::clamp(seconds, std::int64_t{0}, kLongest) * 1000);
}

}  // namespace

PopupView::PopupView(const Storyboard &storyboard, QWidget *parent)
    : QFrame(parent), m_storyboard(storyboard), ui(std::make_unique<Ui::PopupView>()) {
    ui->setupUi(this);
    m_slide.setDuration(static_cast<int>(kSlide.count()));
    m_slide.setEasingCurve(QEasingCurve::InOutQuad);
    connect(&m_slide, &QVariantAnimation::valueChanged, this,
            [this](const QVariant &height) { setWindowHeight(height.toInt()); });
    connect(&m_slide, &QAbstractAnimation::finished, this, &PopupView::slideEnded);
    m_timeout.setSingleShot(true);
    m_timeout.setTimerType(Qt::PreciseTimer);
    connect(&m_timeout, &QTimer::timeout, this, &PopupView::popupTimeout);
    connect(ui->popupAbout, &QLabel::linkActivated, this, &PopupView::popupAbout);
    connectUser();
}

void PopupView::connectUser() {
    m_hold = new PopupHold(*this);
    connect(m_hold, &PopupHold::changed, this, &PopupView::setHeld);
    m_dismissal = new PopupDismissal(*this);
    m_dismissal->leaveTo(*ui->popupAbout);
    m_dismissal->leaveTo(*ui->popupSkip);
    connect(m_dismissal, &PopupDismissal::dismissed, this, [this] { window()->close(); });
    connect(m_dismissal, &PopupDismissal::allSkipped, this, &PopupView::skipAll);
    connect(ui->popupSkip, &QAbstractButton::clicked, this, &PopupView::skipAll);
    connect(&m_recount, &QTimer::timeout, this, &PopupView::showWaiting);
    ui->popupHeld->hide();
    ui->popupWaiting->hide();
    ui->popupSkip->hide();
}

PopupView::~PopupView() {
    viewWillDisappear();
}

void PopupView::viewDidLoad() {
    m_levels = preferredLevels();
    // A link without any target would not react to the pointer.
    ui->popupAbout->setText(QStringLiteral("<a href=\"#\">%1</a>")
                                .arg(tr("Learn more about this event...").toHtmlEscaped()));
}

void PopupView::viewWillAppear() {
    const QScreen *screen = QGuiApplication::primaryScreen();
    const QRect visible = screen != nullptr ? screen->availableGeometry() : QRect();
    m_openPlace.setSize(window()->size());
    // From the visible width alone: beside a panel on the left, the popup keeps that panel's width
    // from the right edge too.
    m_openPlace.moveLeft(visible.width() - m_openPlace.width());
    m_openPlace.moveBottom(visible.bottom());
    setDetails();
    showWaiting();
    m_recount.start(kRecount);
    setWindowHeight(0);
    animateTo(m_openPlace.height());
}

void PopupView::viewWillDisappear() {
    m_slide.stop();
    m_timeout.stop();
    m_recount.stop();
    if (m_condition) {
        m_condition->signal();
    }
}

void PopupView::setDetails() {
    const QIcon image = severityIcon(toQString(severityLevelName(level())));
    if (!image.isNull()) {
        setLabelIcon(*ui->popupImage, image, kImageSize);
    }
    const std::string priority = field("Priority");
    const QString header = paintedRow(knownName(headerOf(priority)));
    ui->popupHeader->setText(header);
    ui->popupHeader->setAccessibleName(tr("Severity: %1").arg(header));
    showDate();
    const auto text = [this](const char *key) { return toQString(field(key)); };
    // Not by arg(), which would look for places in what was sent.
    ui->popupDetails->setWholeText(tr("Date:") + u' ' + text("Date") + u'\n' + tr("Priority:") +
                                   u' ' + toQString(priority) + u'\n' + tr("Host:") + u' ' +
                                   text("Host") + QStringLiteral("\n\n") + tr("Message:") + u'\n' +
                                   text("Message"));
}

/// How wide a text beside the header may be that leaves the header whole.
int PopupView::roomBesideHeader() const {
    ui->popupHeader->ensurePolished();  // for the font of the style sheet
    ui->popupDate->ensurePolished();
    const QMargins margins = ui->contentLayout->contentsMargins();
    return width() - margins.left() - margins.right() - ui->popupImage->maximumWidth() -
           ui->popupHeader->sizeHint().width() - 2 * ui->headLayout->spacing();
}

/// As much of it as there is room for; nothing where the event's moment is not known any more.
void PopupView::showDate() {
    const auto moment = popupDict ? popupDict->moment() : std::nullopt;
    const QDateTime time = QDateTime::fromSecsSinceEpoch(moment.value_or(0));
    const bool isThisYear = time.date().year() == QDate::currentDate().year();
    const QStringList forms = isThisYear
                                  ? QStringList{tr("dddd d MMM, HH:mm"), tr("ddd d MMM, HH:mm"),
                                                tr("d MMM, HH:mm"), tr("HH:mm")}
                                  : QStringList{tr("d MMM yyyy, HH:mm"), tr("d MMM yyyy")};
    const int room = roomBesideHeader();
    ui->popupDate->hide();
    for (const QString &form : forms) {
        const QString text = QLocale().toString(time, form);
        if (moment && ui->popupDate->fontMetrics().horizontalAdvance(text) <= room) {
            ui->popupDate->setText(text);
            ui->popupDate->show();
            break;
        }
    }
    const QString whole = moment ? QLocale().toString(time, forms.first()) : QString();
    ui->popupDate->setAccessibleName(tr("Date: %1").arg(whole));
}

void PopupView::setHeld(bool isHeld) {
    ui->popupHeld->setVisible(isHeld && ui->popupHeld->sizeHint().width() <= roomBesideHeader());
    if (!isHeld) {
        if (!m_closing && m_slide.state() == QAbstractAnimation::Stopped) {
            m_timeout.start(std::max(m_timeLeft, kLeastTimeLeft));
        }
    } else if (std::exchange(m_closing, false)) {
        m_timeLeft = 0;
        animateTo(m_openPlace.height());
    } else if (m_timeout.isActive()) {
        m_timeLeft = m_timeout.remainingTime();
        m_timeout.stop();
    }
}

void PopupView::showWaiting() {
    const auto count = static_cast<qint64>(m_queue == nullptr ? 0 : m_queue->waitingPopups());
    ui->popupWaiting->setText(tr("%1 more", nullptr, pluralNumber(count)).arg(countText(count)));
    ui->popupWaiting->setAccessibleName(tr("Waiting alerts: %1").arg(countText(count)));
    ui->popupWaiting->setVisible(count > 0);
    ui->popupSkip->setVisible(count > 0);
    // Below the link where there is no room beside it.
    const QMargins margins = ui->contentLayout->contentsMargins();
    const int room = width() - margins.left() - margins.right();
    const int wanted = ui->popupAbout->sizeHint().width() + ui->popupWaiting->sizeHint().width() +
                       ui->popupSkip->sizeHint().width() + ui->linkLayout->spacing() +
                       2 * ui->waitingLayout->spacing();
    const bool isBelow = count > 0 && wanted > room;
    ui->linkLayout->setDirection(isBelow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
}

void PopupView::skipAll() {
    if (m_queue != nullptr) {
        m_queue->skipAll();
    }
    window()->close();
}

void PopupView::popupTimeout() {
    if (std::exchange(m_closing, true)) {
        return;
    }
    m_timeout.stop();
    animateTo(0);
}

void PopupView::popupAbout() {
    if (m_eventSheet) {
        m_eventSheet->raise();
        m_eventSheet->activateWindow();
        return;
    }
    auto controller = m_storyboard.instantiate(QStringLiteral("eventView"));
    auto *sheet = dynamic_cast<Sheet *>(controller.get());
    auto *details = dynamic_cast<EventSheetLink *>(controller.get());
    if (sheet == nullptr || details == nullptr || !popupDict) {
        return;
    }
    details->setHideButtons(true);
    details->setDict(*popupDict);
    m_eventSheet = controller.release();
    // The popup is not its parent: the sheet stays when the popup goes, which its time is soon up
    // for.
    sheet->presentOver(nullptr);
    sheet->raise();
    sheet->activateWindow();
    Q_EMIT eventSheetOpened(sheet);
}

std::int64_t PopupView::level() const {
    return m_levels.*kSeverityLevels[classifyPriority(field("Priority")).shown];
}

std::string PopupView::field(const char *key) const {
    return popupDict ? popupDict->value(key).value_or("") : std::string();
}

void PopupView::setWindowHeight(int height) {
    // No window is without height; it closes as soon as it has come down to this.
    QRect place = m_openPlace;
    place.setTop(m_openPlace.bottom() + 1 - std::max(height, 1));
    window()->setGeometry(place);
}

void PopupView::animateTo(int height) {
    m_slide.stop();
    m_slide.setStartValue(window()->height());
    m_slide.setEndValue(height);
    m_slide.start();
}

void PopupView::slideEnded() {
    if (m_closing) {
        window()->close();
    } else if (m_hold->isHeld()) {
        m_timeLeft = std::exchange(m_wasOpen, true) ? m_timeLeft : timerInterval(popupTime);
    } else {
        m_timeout.start(std::exchange(m_wasOpen, true) ? std::max(m_timeLeft, kLeastTimeLeft)
                                                       : timerInterval(popupTime));
    }
}

void PopupView::showEvent(QShowEvent *event) {
    QFrame::showEvent(event);
    handleShow(this, *event);
}

void PopupView::hideEvent(QHideEvent *event) {
    handleHide(*event);
    QFrame::hideEvent(event);
}

}  // namespace quorbel
