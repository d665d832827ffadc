#include "reports/ReportCounts.h"

#include "platform/gui/QtText.h"
#include "reports/ReportEngine.h"

#include <QCoreApplication>
#include <QStringList>

namespace quorbel {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(quorbel::ReportCounts)
};

QString groupCount(const ReportEngine &report) {
    const auto groups = static_cast<qint64>(report.groupCount());
    const int number = pluralNumber(groups);
    const bool isOne = groups == 1;
    switch (*report.kind()) {
        case ReportKind::kHost:
            return isOne ? Texts::tr("1 host") : Texts::tr("%1 hosts", nullptr, number);
        case ReportKind::kMessage:
            return isOne ? Texts::tr("1 message") : Texts::tr("%1 messages", nullptr, number);
        case ReportKind::kPriority:
            return isOne ? Texts::tr("1 priority") : Texts::tr("%1 priorities", nullptr, number);
        default:
            return isOne ? Texts::tr("1 date") : Texts::tr("%1 dates", nullptr, number);
    }
}

}  // namespace

QString reportCounts(const ReportEngine &report) {
    if (!report.kind()) {
        return {};
    }
    const auto counted = [](const QString &text, std::uint64_t count) {
        return text.contains(u"%1") ? text.arg(countText(static_cast<qint64>(count))) : text;
    };
    const auto number = [](std::uint64_t count) {
        return pluralNumber(static_cast<qint64>(count));
    };
    const std::uint64_t events = report.eventCount();
    const std::uint64_t lines = report.lineCount();
    const QString ofEvents =
        events == 1 ? Texts::tr("1 event") : Texts::tr("%1 events", nullptr, number(events));
    const QString ofLines =
        lines == 1 ? Texts::tr("1 line read") : Texts::tr("%1 lines read", nullptr, number(lines));
    return QStringList{counted(ofEvents, events), counted(groupCount(report), report.groupCount()),
                       counted(ofLines, lines),
                       counted(Texts::tr("%1 skipped"), report.skippedLineCount())}
        .join(QStringLiteral(" · "));
}

}  // namespace quorbel
