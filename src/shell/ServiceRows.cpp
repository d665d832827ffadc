#include "shell/ServiceRows.h"

#include "platform/gui/QtText.h"

#include <QCoreApplication>
#include <QDateTime>

#include <algorithm>
#include <array>
#include <utility>

namespace quorbel {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(quorbel::ServiceRows)
};

/// What the service calls a counter, what it is called here, and what it counts.
struct CounterText {
    std::string_view counter;
    const char *title;
    const char *meaning;
};

constexpr std::array kCounters{
    CounterText{"received", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Messages received"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Messages that came in")},
    CounterText{"malformed", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Malformed"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                                  "Without a usable priority or header, empty, or cut; all but the "
                                  "empty ones are stored")},
    CounterText{"stored", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Stored"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                                  "Events in the log files; a long message is several")},
    CounterText{"not stored", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Not stored"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                                  "Events for which there was no room or no file: make room")},
    CounterText{"dropped", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Dropped"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                                  "UDP messages that came faster than they could be read: let busy "
                                  "senders use TCP")},
    CounterText{"notifications dropped", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Not told"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                                  "Changes that an open window was not told of: open it again")},
    CounterText{
        "connections closed", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Connections closed"),
        QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Idle connections that made room for new ones")},
    CounterText{"closed unread", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Closed unread"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                                  "Connections closed before all that had arrived was read")},
    CounterText{"stray texts", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Stray texts"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                                  "Messages between the counted ones of a connection: the sender "
                                  "counts wrong")},
    CounterText{"bytes skipped", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Bytes skipped"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                                  "What messages over TCP had beyond 65,536 bytes")},
    CounterText{"TLS refused", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "TLS failures"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                                  "TLS connections that failed: most often a certificate")},
    CounterText{"filtered", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Filtered"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Messages that filters left out")},
    CounterText{"relayed", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Relayed"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Messages whose host a relay has named")},
    CounterText{"removed", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Removed"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Events removed because of their age")},
    CounterText{"names looked up", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Names looked up"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Senders' names that were asked for")},
    CounterText{"names found", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Names found"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Those of them that were found")},
    CounterText{"names not looked up",
                QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Names not looked up"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                                  "Look-ups left out because too many were waiting")},
    CounterText{"events set", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Events set"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Events that actions made")},
    CounterText{"actions held back", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Actions held back"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                                  "What actions did not do because it came too often")},
    CounterText{"matches below threshold",
                QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Matches below threshold"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                                  "Matches at which an action waited for its threshold")},
    CounterText{"threshold hosts forgotten",
                QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Threshold hosts forgotten"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                                  "Hosts for which a threshold had no room: narrow its filter")},
    CounterText{"commands run", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Commands run"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Commands of actions that were started")},
    CounterText{"commands not run", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Commands not run"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                                  "Those that could not be started, or for which too many waited")},
    CounterText{"e-mails sent", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "E-mails sent"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                                  "E-mails that the mail server took for somebody")},
    CounterText{"e-mails dropped", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "E-mails dropped"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                                  "E-mails that at least one recipient did not get")},
    CounterText{
        "events sent on", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Events sent on"),
        QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Events that reached the receivers of outputs")},
    CounterText{
        "events removed unsent", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Events removed unsent"),
        QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                          "Events that were removed before an output could send them: is the "
                          "receiver there?")},
    CounterText{
        "journal lines dropped", QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Journal lines dropped"),
        QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Lines that the journal did not take in time")},
    CounterText{"perhaps not on disk",
                QT_TRANSLATE_NOOP("quorbel::ServiceRows", "Perhaps not on disk"),
                QT_TRANSLATE_NOOP("quorbel::ServiceRows",
                                  "Stored events that the disk would not confirm: look at it")},
};

/// What a refusal says, with its detail.
QString refusalText(const ServiceReport::Refusal &refusal) {
    const QString detail = toQString(refusal.detail);
    if (refusal.reason == "filtered") {
        return detail.isEmpty() ? Texts::tr("No include filter matches")
                                : Texts::tr("Kept out by the filter %1").arg(detail);
    }
    const auto with = [&detail](const QString &reason) {
        return detail.isEmpty() ? reason : reason + QStringLiteral(": ") + detail;
    };
    if (refusal.reason == "malformed") {
        return with(Texts::tr("Malformed"));
    }
    if (refusal.reason == "too long") {
        return with(Texts::tr("Too long, the rest is not stored"));
    }
    if (refusal.reason == "connection closed") {
        return with(Texts::tr("Connection closed to make room"));
    }
    if (refusal.reason == "TLS refused") {
        return with(Texts::tr("TLS failed"));
    }
    if (refusal.reason == "wrong port") {
        return with(Texts::tr("Wrong port"));
    }
    return with(toQString(refusal.reason));
}

}  // namespace

ServiceRows::ServiceRows(QStringList titles, QList<int> numbers, QObject *parent)
    : QAbstractTableModel(parent), m_titles(std::move(titles)), m_numbers(std::move(numbers)) {}

void ServiceRows::show(const QList<QStringList> &rows) {
    if (rows.size() != m_rows.size()) {
        beginResetModel();
        m_rows = rows;
        endResetModel();
    } else if (rows != m_rows) {
        m_rows = rows;
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    }
}

QVariant ServiceRows::alignment(int column) const {
    return {(m_numbers.contains(column) ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter};
}

int ServiceRows::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int ServiceRows::columnCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_titles.size());
}

QVariant ServiceRows::data(const QModelIndex &index, int role) const {
    if (role == Qt::DisplayRole) {
        return m_rows.at(index.row()).at(index.column());
    }
    if (role == Qt::TextAlignmentRole) {
        return alignment(index.column());
    }
    return {};
}

QVariant ServiceRows::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole) {
        return m_titles.at(section);
    }
    if (orientation == Qt::Horizontal && role == Qt::TextAlignmentRole) {
        return alignment(section);
    }
    return QAbstractTableModel::headerData(section, orientation, role);
}

QList<QStringList> counterRows(const ServiceReport &report) {
    QList<QStringList> rows;
    for (const auto &[name, count] : report.counters) {
        const auto known =
            std::ranges::find(kCounters, std::string_view(name), &CounterText::counter);
        const bool isKnown = known != kCounters.end();
        rows.append({isKnown ? Texts::tr(known->title) : toQString(name), counterText(count),
                     isKnown ? Texts::tr(known->meaning) : QString()});
    }
    return rows;
}

QList<QStringList> refusalRows(const ServiceReport &report) {
    QList<QStringList> rows;
    for (const ServiceReport::Refusal &refusal : report.refusals) {
        rows.append({toQString(refusal.sender), refusalText(refusal), counterText(refusal.count),
                     QDateTime::fromSecsSinceEpoch(refusal.seconds)
                         .toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))});
    }
    return rows;
}

}  // namespace quorbel
