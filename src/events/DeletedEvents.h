#pragma once

#include "core/AppState.h"
#include "core/EventList.h"
#include "platform/LineCommand.h"

#include <QObject>
#include <QTimer>

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QAction;

namespace quorbel {

class AppDelegate;
class RestorationLines;

/// What the user deleted last, and its way back: into the list and its counters at once, and by a
/// command into the service's log. That is put together in slices between the window's other
/// events, and before anything else is deleted. What could not be put back is said over the page.
class DeletedEvents : public QObject {
    Q_OBJECT

public:
    /// Of the work on a command, a part that nobody notices.
    static constexpr std::chrono::milliseconds kSlice{12};

    /// Both outlive this. The command is the page's, whatever has the focus there.
    DeletedEvents(AppDelegate &delegate, QWidget &page);
    /// What came back in the list is sent before.
    ~DeletedEvents() override;

    /// Takes rows out of the list and its counters, and keeps them in place of what was kept before
    /// if there are any. Returns what tells the service (see takeForDeletion()).
    [[nodiscard]] LineCommand take(const std::vector<RowRange> &rows);
    /// Undo Delete, "undoDelete", enabled while something is kept. It is the page's.
    [[nodiscard]] QAction *undoAction() const { return m_undo; }

private:
    using Counters = std::array<std::int64_t, kSeverityClassCount>;

    [[nodiscard]] Counters counters() const;
    void undo();
    void nameSome();
    void finish();
    void send();
    void tell(const std::optional<std::string> &reply, std::size_t unnamed);

    AppDelegate &m_delegate;
    QWidget &m_page;
    QAction *m_undo;
    Counters m_counted{};                       // of what is kept
    std::unique_ptr<RestorationLines> m_lines;  // of what came back and was not sent yet
    QTimer m_timer;
};

}  // namespace quorbel
