#include "shell/ServiceLine.h"

#include "common/SyslogTest.h"
#include "core/AppDelegate.h"
#include "platform/UdpPorts.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"
#include "platform/gui/LookProperty.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>
#include <ctime>

namespace quorbel {

namespace {

constexpr std::chrono::seconds kInterval{1};
constexpr int kImageSize = 16;
constexpr int kSignSize = 14;
constexpr int kInset = 16;  // as far as the entries' images
constexpr int kGap = 8;
const QColor kGood(0x2f, 0x9e, 0x4f);
const QColor kBad(0x5b, 0x66, 0x75);

void setTextOf(QLabel &label, const QString &text) {
    if (label.text() != text) {
        label.setText(text);
        label.setAccessibleName(text);
    }
}

TestPort testPortOf(const ServiceReport &report) {
    const bool isServed = std::ranges::any_of(report.listeners, [](const auto &listener) {
        return listener.protocol == "udp" && listener.port == kSyslogPort;
    });
    return isServed                       ? TestPort::kService
           : isUdpPortServed(kSyslogPort) ? TestPort::kOther
                                          : TestPort::kNobody;
}

}  // namespace

ServiceLine::ServiceLine(AppDelegate &delegate, QWidget *parent)
    : QWidget(parent), m_delegate(delegate) {
    setObjectName(QStringLiteral("serviceLine"));
    setAccessibleName(tr("Service"));
    // The entries say how wide the navigation is; long texts take more lines.
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 6);
    column->setSpacing(2);
    auto *edge = new QFrame(this);
    edge->setProperty("role", QStringLiteral("line"));
    column->addWidget(edge);
    column->addSpacing(4);
    makeHead(*column);
    makeLines(*column);
    makeButtons(*column);
    connect(&m_timer, &QTimer::timeout, this, &ServiceLine::refresh);
    refresh();
    fit();
}

ServiceLine::~ServiceLine() = default;

void ServiceLine::makeHead(QBoxLayout &column) {
    m_head = new QWidget(this);
    auto *row = new QHBoxLayout(m_head);
    row->setContentsMargins({});
    row->addSpacing(kInset);
    row->setSpacing(kGap);
    m_image = new QLabel(m_head);
    m_image->setAccessibleName(tr("Service"));
    m_title = new QLabel(m_head);
    m_title->setObjectName(QStringLiteral("serviceContact"));
    m_title->setTextFormat(Qt::PlainText);
    m_title->setWordWrap(true);
    row->addWidget(m_image, 0, Qt::AlignTop);
    row->addWidget(m_title, 1);
    column.addWidget(m_head);
}

void ServiceLine::makeLines(QBoxLayout &column) {
    for (qsizetype i = 0; i < kMostLines; ++i) {
        auto *widget = new QWidget(this);
        auto *row = new QHBoxLayout(widget);
        row->setContentsMargins({});
        row->addSpacing(kInset);
        row->setSpacing(kGap - 2);
        auto *sign = new QLabel(widget);
        sign->setAccessibleName(tr("Problem"));
        setLabelIcon(*sign, severityIcon(QStringLiteral("Moderate")), sizedToFont(kSignSize));
        auto *text = new QLabel(widget);
        text->setObjectName(QStringLiteral("serviceText%1").arg(i));
        text->setTextFormat(Qt::PlainText);
        text->setWordWrap(true);
        row->addWidget(sign, 0, Qt::AlignTop);
        row->addWidget(text, 1);
        column.addWidget(widget);
        m_lines.append({widget, sign, text});
    }
}

void ServiceLine::makeButtons(QBoxLayout &column) {
    m_details = new QPushButton(tr("Details"), this);
    m_details->setObjectName(QStringLiteral("serviceDetails"));
    m_details->setProperty("role", QStringLiteral("link"));
    m_details->setAccessibleName(tr("Details of the service"));
    m_details->setToolTip(tr("What the service counted, and what it refused from whom"));
    m_details->setCursor(Qt::PointingHandCursor);
    m_details->setAutoDefault(false);
    auto *row = new QHBoxLayout;
    row->setContentsMargins({});
    row->addSpacing(kInset);
    row->addWidget(m_details);
    row->addStretch(1);
    column.addLayout(row);
    m_button = new QPushButton(this);
    m_button->setObjectName(QStringLiteral("serviceButton"));
    m_button->setProperty("role", QStringLiteral("fold"));
    m_button->setAutoDefault(false);
    const int size = sizedToFont(kImageSize) + 4;
    m_button->setIconSize({size, size});
    column.addWidget(m_button, 0, Qt::AlignHCenter);
    connect(m_details, &QAbstractButton::clicked, this, &ServiceLine::detailsAsked);
    connect(m_button, &QAbstractButton::clicked, this, &ServiceLine::detailsAsked);
}

void ServiceLine::setNarrow(bool isNarrow) {
    m_isNarrow = isNarrow;
    fit();
    refresh();
}

void ServiceLine::fit() {
    m_head->setVisible(!m_isNarrow);
    m_details->setVisible(!m_isNarrow);
    m_button->setVisible(m_isNarrow);
}

void ServiceLine::showEvent(QShowEvent *event) {
    QWidget::showEvent(event);
    m_watch.emplace(m_delegate.service, [this] {
        followContact();
        refresh();
    });
    m_timer.start(kInterval);
}

void ServiceLine::hideEvent(QHideEvent *event) {
    QWidget::hideEvent(event);
    m_timer.stop();
    m_watch.reset();
}

void ServiceLine::followContact() {
    m_outcome = m_delegate.service.outcome();
    const bool isThere = m_outcome == StatusOutcome::kTold || m_outcome == StatusOutcome::kTooOld;
    if (isThere) {
        m_lostAt.reset();
    } else if (!m_lostAt) {
        m_lostAt = std::time(nullptr);
    }
    m_testPort = m_outcome == StatusOutcome::kTold ? testPortOf(m_delegate.service.report())
                                                   : TestPort::kService;
}

ServiceFacts ServiceLine::facts() const {
    return {.outcome = m_outcome,
            .report = m_delegate.service.report(),
            .now = std::time(nullptr),
            .lastEvent = m_delegate.state.arrivals.latest(),
            .lostAt = m_lostAt,
            .access = libraryAccess(),
            .hasSettings = hasSettingsDocument(),
            .isSaveRefused = m_delegate.lastSave.problem().has_value(),
            .testPort = m_testPort};
}

void ServiceLine::refresh() {
    show(serviceTexts(facts()));
}

void ServiceLine::show(const ServiceTexts &texts) {
    setTextOf(*m_title, texts.title);
    if (m_shownContact != texts.isConnected) {
        m_shownContact = texts.isConnected;
        const QIcon image = lineIcon(QStringLiteral("monitor"), texts.isConnected ? kGood : kBad);
        setLabelIcon(*m_image, image, sizedToFont(kImageSize));
    }
    m_button->setIcon(!texts.problems.isEmpty()
                          ? severityIcon(QStringLiteral("Moderate"))
                          : lineIcon(QStringLiteral("monitor"), texts.isConnected ? kGood : kBad));
    const QStringList all = QStringList(texts.title) + texts.notes + texts.problems;
    m_button->setAccessibleName(tr("Service: %1").arg(all.join(QStringLiteral(", "))));
    m_button->setToolTip(all.join(u'\n'));
    showLines(texts);
}

void ServiceLine::showLines(const ServiceTexts &texts) {
    const QStringList lines = texts.notes + texts.problems;
    for (qsizetype i = 0; i < m_lines.size(); ++i) {
        const Line &line = m_lines.at(i);
        line.row->setVisible(!m_isNarrow && i < lines.size());
        if (i < lines.size()) {
            const bool isProblem = i >= texts.notes.size();
            line.sign->setVisible(isProblem);
            const QString role = isProblem ? QStringLiteral("problem") : QStringLiteral("small");
            setLookProperty(*line.text, "role", role);
            setTextOf(*line.text, lines.at(i));
        }
    }
}

}  // namespace quorbel
