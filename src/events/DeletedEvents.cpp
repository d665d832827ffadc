#include "events/DeletedEvents.h"

#include "core/AppDelegate.h"
#include "events/EventDeletion.h"
#include "events/RestorationLines.h"
#include "platform/gui/AlertBox.h"
#include "platform/gui/KnownText.h"
#include "platform/gui/QtText.h"

#include <QAction>
#include <QCoreApplication>
#include <QPointer>
#include <QWidget>

#include <utility>

namespace quorbel {

DeletedEvents::DeletedEvents(AppDelegate &delegate, QWidget &page)
    : m_delegate(delegate), m_page(page), m_undo(new QAction(tr("&Undo Delete"), &page)) {
    m_undo->setObjectName(QStringLiteral("undoDelete"));
    m_undo->setShortcut(QKeySequence::Undo);
    m_undo->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    m_undo->setShortcutVisibleInContextMenu(true);
    m_undo->setAutoRepeat(false);
    m_undo->setEnabled(m_delegate.events.asideCount() > 0);
    m_page.addAction(m_undo);
    connect(m_undo, &QAction::triggered, this, &DeletedEvents::undo);
    connect(&m_timer, &QTimer::timeout, this, &DeletedEvents::nameSome);
}

DeletedEvents::~DeletedEvents() {
    finish();
}

DeletedEvents::Counters DeletedEvents::counters() const {
    Counters values{};
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = m_delegate.state.*kSeverityCounters[i];
    }
    return values;
}

LineCommand DeletedEvents::take(const std::vector<RowRange> &rows) {
    // The service is to hear of what came back before it hears that it goes again.
    finish();
    const Counters before = counters();
    LineCommand deleted = takeForDeletion(m_delegate.events, rows, m_delegate.state);
    if (!rows.empty()) {
        m_counted = counters();
        for (std::size_t i = 0; i < before.size(); ++i) {
            m_counted[i] = before[i] - m_counted[i];
        }
        m_delegate.events.setAside(rows);
        m_undo->setEnabled(true);
    }
    return deleted;
}

void DeletedEvents::undo() {
    finish();
    for (std::size_t i = 0; i < m_counted.size(); ++i) {
        m_delegate.state.*kSeverityCounters[i] += std::exchange(m_counted[i], 0);
    }
    m_lines = std::make_unique<RestorationLines>(m_delegate.events, m_delegate.events.putBack());
    m_undo->setEnabled(false);
    m_timer.start(std::chrono::milliseconds::zero());
}

void DeletedEvents::nameSome() {
    if (m_lines->work(kSlice)) {
        send();
    }
}

void DeletedEvents::finish() {
    if (m_lines != nullptr) {
        m_lines->work(std::chrono::milliseconds::max());
        send();
    }
}

void DeletedEvents::send() {
    m_timer.stop();
    const std::unique_ptr<RestorationLines> lines = std::move(m_lines);
    const auto onAnswer = [self = QPointer(this),
                           unnamed = lines->unnamed()](const std::optional<std::string> &reply) {
        QMetaObject::invokeMethod(QCoreApplication::instance(), [self, reply, unnamed] {
            if (self != nullptr) {
                self->tell(reply, unnamed);
            }
        });
    };
    m_delegate.setPipe(lines->takeCommand(), onAnswer);
}

void DeletedEvents::tell(const std::optional<std::string> &reply, std::size_t unnamed) {
    QStringList problems;
    if (!reply) {
        problems += tr("The service did not answer");
    } else if (*reply != "OK") {
        problems += knownProblem(toQString(*reply));
    }
    if (unnamed > 0) {
        problems += tr("No log file can hold %1 of them, which lack a time or a text", nullptr,
                       pluralNumber(static_cast<qint64>(unnamed)))
                        .arg(countText(static_cast<qint64>(unnamed)));
    }
    if (problems.isEmpty()) {
        return;
    }
    openAlert(&m_page,
              {tr("The deleted events are listed again, but may be missing from the log."),
               tr("%1.\n\nWhat is not in the log will not be listed after the next start.")
                   .arg(problems.join(QStringLiteral(". "))),
               {},
               {}},
              {});
}

}  // namespace quorbel
