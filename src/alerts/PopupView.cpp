#include "alerts/PopupView.h"

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
    setWindowHeight(0);
    animateTo(m_openPlace.height());
}

void PopupView::viewWillDisappear() {
    m_slide.stop();
    m_timeout.stop();
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
    const auto text = [this](const char *key) { return toQString(field(key)); };
    // Not by arg(), which would look for places in what was sent.
    ui->popupDetails->setWholeText(tr("Date:") + u' ' + text("Date") + u'\n' + tr("Priority:") +
                                   u' ' + toQString(priority) + u'\n' + tr("Host:") + u' ' +
                                   text("Host") + QStringLiteral("\n\n") + tr("Message:") + u'\n' +
                                   text("Message"));
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
    } else {
        m_timeout.start(timerInterval(popupTime));
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
