#include "shell/ServiceDetails.h"

#include "platform/gui/QtText.h"
#include "platform/gui/RowTableView.h"
#include "shell/ServiceRows.h"
#include "shell/ServiceTexts.h"

#include <QDateTime>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <array>

namespace quorbel {

namespace {

constexpr QSize kDesigned(860, 560);
constexpr int kRefusalRows = 6;
constexpr std::array kRefusalWidths{180, 370, 105, 140};
constexpr std::array kCounterWidths{180, 110, 480};

/// "UDP 514, TCP 514".
QString listenersText(const ServiceReport &report) {
    QStringList ports;
    for (const ServiceReport::Listener &listener : report.listeners) {
        ports += toQString(listener.protocol).toUpper() + u' ' + QString::number(listener.port);
    }
    return ports.join(QStringLiteral(", "));
}

}  // namespace

ServiceDetails::ServiceDetails(ServiceState &service, QWidget *parent)
    : Sheet(parent),
      m_service(service),
      m_head(new QLabel(this)),
      m_refusals(
          new ServiceRows({tr("Sender"), tr("Why"), tr("How often"), tr("Last")}, {2}, this)),
      m_counters(new ServiceRows({tr("Counter"), tr("Count"), tr("Meaning")}, {1}, this)) {
    setObjectName(QStringLiteral("serviceSheet"));
    setWindowTitle(tr("Service"));
    setAccessibleName(tr("Service"));
    resize(kDesigned);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(24, 20, 24, 20);
    column->setSpacing(10);
    m_head->setObjectName(QStringLiteral("serviceHead"));
    m_head->setTextFormat(Qt::PlainText);
    m_head->setWordWrap(true);
    column->addWidget(m_head);
    m_refusalTable = addTable("serviceRefusals", tr("Refused, last senders first"), m_refusals);
    m_refusalTable->setColumnWidths(kRefusalWidths);
    m_refusalTable->setShownRows(kRefusalRows);
    auto *note = new QLabel(
        tr("Of a sender that is not listed here and of which no event came, nothing reached the "
           "service: look at its address and port, and at the firewall."),
        this);
    note->setProperty("role", QStringLiteral("small"));
    note->setWordWrap(true);
    column->addWidget(note);
    addTable("serviceCounters", tr("Counted since it started"), m_counters)
        ->setColumnWidths(kCounterWidths);
    addButtons();
    m_watch.emplace(m_service, [this] { refresh(); });
    refresh();
}

ServiceDetails::~ServiceDetails() = default;

RowTableView *ServiceDetails::addTable(const char *name, const QString &title, ServiceRows *rows) {
    auto *heading = new QLabel(title, this);
    heading->setProperty("role", QStringLiteral("section"));
    auto *table = new RowTableView(this);
    table->setObjectName(QString::fromLatin1(name));
    table->setAccessibleName(title);
    table->setModel(rows);
    table->horizontalHeader()->setStretchLastSection(true);
    auto *column = static_cast<QVBoxLayout *>(layout());
    column->addWidget(heading);
    column->addWidget(table, 1);
    return table;
}

void ServiceDetails::addButtons() {
    auto *close = new QPushButton(tr("Close"), this);
    close->setObjectName(QStringLiteral("serviceClose"));
    close->setAccessibleName(tr("Close"));
    close->setDefault(true);
    connect(close, &QAbstractButton::clicked, this, &QDialog::accept);
    auto *row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(close);
    static_cast<QVBoxLayout *>(layout())->addLayout(row);
}

QString ServiceDetails::headText() const {
    const auto outcome = m_service.outcome();
    if (!outcome) {
        return tr("Asking the service");
    }
    if (outcome != StatusOutcome::kTold) {
        return whyNotTold(*outcome);
    }
    const ServiceReport &report = m_service.report();
    return tr("QuorbelSrv %1, running since %2, listens on %3.")
        .arg(toQString(report.version),
             QDateTime::fromSecsSinceEpoch(report.since)
                 .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")),
             listenersText(report));
}

void ServiceDetails::refresh() {
    m_head->setText(headText());
    m_head->setAccessibleName(m_head->text());
    m_refusals->show(refusalRows(m_service.report()));
    m_counters->show(counterRows(m_service.report()));
    m_refusalTable->setHint(m_service.outcome() == StatusOutcome::kTold ? tr("Nothing was refused.")
                                                                        : tr("Cannot be told"));
}

}  // namespace quorbel
