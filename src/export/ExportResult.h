#pragma once

#include "core/ServiceResults.h"
#include "core/ServiceState.h"
#include "platform/gui/NoteLabel.h"

#include <optional>
#include <string>

namespace quorbel {

/// What came of one of the two exports: when the service wrote it last, how often since it started,
/// and what went wrong last. Asks the service once a second while it is on screen.
class ExportResult : public NoteLabel {
    Q_OBJECT

public:
    explicit ExportResult(QWidget *parent = nullptr);
    ~ExportResult() override;

    /// `service` outlives this. `name` is the service's: "text" or "database". Dates are shown in
    /// `dateFormat`, which outlives this, too.
    void follow(ServiceState &service, const std::string &name, const std::string &dateFormat);

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void refresh();
    [[nodiscard]] QString writtenText(const ServiceResult &result, const QString &since) const;

    ServiceState *m_service = nullptr;
    std::string m_name;
    const std::string *m_dateFormat = nullptr;
    std::optional<ServiceState::Watch> m_watch;
};

}  // namespace quorbel
