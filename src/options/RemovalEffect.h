#pragma once

#include "common/RetentionRules.h"
#include "core/RemovalCount.h"
#include "options/OptionsValues.h"

#include <QObject>

#include <memory>

class QAbstractButton;

namespace quorbel {

class ConsequenceLine;
class EventHold;
class Recount;
class RemovalOptions;

/// Says, from the first edit of the page on, how many of the listed events saving removes that the
/// service would have kept: by shorter times, or by the first settings that there are. While there
/// are any, the Save button does not look like the one to press. What waits while the list is held
/// is not counted, which is said.
class RemovalEffect : public QObject {
    Q_OBJECT

public:
    /// What it needs outlives it.
    RemovalEffect(const RemovalOptions &removal, EventList &events, const EventHold &hold,
                  ConsequenceLine &line, QAbstractButton &save);
    ~RemovalEffect() override;

    /// After the user's edit.
    void edited();
    /// Says nothing until the next edit. The service follows these settings.
    void reset(const Dictionary &settings);

private:
    void start();
    void show();
    [[nodiscard]] QString notCounted() const;
    void say(const QString &consequence, const QString &more, bool isWarning);

    const RemovalOptions &m_removal;
    const EventHold &m_hold;
    ConsequenceLine &m_line;
    QAbstractButton &m_save;
    RetentionRules m_rules;  ///< that the service follows
    RemovalCount m_count;
    bool m_isShorter = false;  ///< whether some events would be kept for less time
    std::unique_ptr<Recount> m_recount;
};

}  // namespace quorbel
