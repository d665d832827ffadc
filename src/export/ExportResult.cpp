#include "export/ExportResult.h"

#include "platform/gui/QtText.h"
#include "settings/ResultTexts.h"

#include <algorithm>

namespace quorbel {

ExportResult::ExportResult(QWidget *parent) : NoteLabel(parent) {}

ExportResult::~ExportResult() = default;

void ExportResult::follow(ServiceState &service, const std::string &name,
                          const std::string &dateFormat) {
    m_service = &service;
    m_name = name;
    m_dateFormat = &dateFormat;
}

void ExportResult::showEvent(QShowEvent *event) {
    NoteLabel::showEvent(event);
    if (m_service != nullptr) {
        m_watch.emplace(*m_service, [this] { refresh(); });
        refresh();
    }
}

void ExportResult::hideEvent(QHideEvent *event) {
    m_watch.reset();
    NoteLabel::hideEvent(event);
}

void ExportResult::refresh() {
    const auto results = serviceResults(m_service->report(), "Exports");
    if (!results) {
        say(tr("What came of it cannot be told: %1").arg(whyNotTold(m_service->outcome())));
        return;
    }
    const auto found = std::ranges::find(*results, m_name, &ServiceResult::name);
    if (found == results->end()) {
        say(tr("The service does not write it now"));
        return;
    }
    QString text = writtenText(*found, resultTime(m_service->report().since, *m_dateFormat));
    if (found->failed > 0) {
        text += u'\n' + tr("Last problem, at %1").arg(problemText(*found, *m_dateFormat));
    }
    say(text, isFailing(*found));
}

QString ExportResult::writtenText(const ServiceResult &result, const QString &since) const {
    const auto times = static_cast<qint64>(result.done);
    if (times == 0) {
        return tr("Never written since the service started at %1").arg(since);
    }
    const QString last = resultTime(result.doneSeconds, *m_dateFormat);
    if (times == 1) {
        return tr("Written at %1, once since the service started at %2").arg(last, since);
    }
    return tr("Written last at %1, %2 times since the service started at %3", nullptr,
              pluralNumber(times))
        .arg(last, countText(times), since);
}

}  // namespace quorbel
