#include "settings/ResultTexts.h"

#include "platform/DateFormat.h"
#include "platform/gui/KnownText.h"
#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"

#include <QCoreApplication>

namespace quorbel {

namespace {

/// Of no object of its own.
struct Texts {
    Q_DECLARE_TR_FUNCTIONS(quorbel::ResultTexts)
};

}  // namespace

QString whyNotTold(std::optional<StatusOutcome> outcome) {
    if (!outcome) {
        return Texts::tr("the service is being asked");
    }
    switch (*outcome) {
        case StatusOutcome::kTold:
        case StatusOutcome::kTooOld:
            return Texts::tr("the service that runs is too old to tell it");
        case StatusOutcome::kNotAllowed:
            return Texts::tr("you may not ask the service");
        case StatusOutcome::kNotRunning:
            return Texts::tr("the service does not run");
        case StatusOutcome::kNoBus:
        case StatusOutcome::kNoAnswer:
            break;
    }
    return Texts::tr("the service does not answer");
}

QString resultTime(std::int64_t seconds, const std::string &dateFormat) {
    return toQString(DateFormat(dateFormat).render(static_cast<double>(seconds)));
}

QString problemText(const ServiceResult &result, const std::string &dateFormat) {
    return result.failed == 0
               ? QString()
               : resultTime(result.failedSeconds, dateFormat) + QStringLiteral(": ") +
                     paintedRow(knownProblem(toQString(result.problem)));
}

bool isFailing(const ServiceResult &result) {
    return result.failed > 0 && result.failedSeconds >= result.doneSeconds;
}

}  // namespace quorbel
