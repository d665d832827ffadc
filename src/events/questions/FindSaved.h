#pragma once

#include "core/SavedFilter.h"
#include "events/find/FindChoice.h"

#include <QDateTime>

#include <functional>

namespace quorbel {

class EventList;
class FilterLibrary;
class QuestionPanel;

/// Events that a kept filter or a question means; a press opens the panel that offers them. What is
/// chosen here narrows what the rest of the bar says.
class FindSaved : public FindChoice {
    Q_OBJECT

public:
    explicit FindSaved(QWidget *parent);

    /// Once. All outlive this. `current` tells what the page is filtered by, `clock` the time.
    void attach(EventList &events, FilterLibrary &library, std::function<EventQuery()> current,
                std::function<QDateTime()> clock);
    /// Whether it shows its image alone while nothing is chosen.
    void setCompact(bool isCompact);

    void addTo(EventQuery &query) const override;
    /// Leaves the query alone, since the rest of the bar may ask for the same.
    void removeFrom(EventQuery & /*query*/) const override {}
    /// As a filter that is not kept.
    void takeFrom(const EventQuery &query) override;
    void clear() override;
    void openBelow(QWidget &anchor) override;

private:
    void openPanel();
    void choose(const SavedFilter &filter);
    void takeName(const std::string &from, const std::string &to);
    void loseName();
    void nameChosen(const std::string &name);
    void showState(const QString &value);
    void importFilters();
    void importFrom(const QString &path);
    void exportFilters();
    void tell(const QString &problem, std::function<void()> then = {});

    FilterLibrary *m_library = nullptr;
    QuestionPanel *m_panel = nullptr;
    std::function<EventQuery()> m_current;
    std::optional<SavedFilter> m_chosen;  // without a name once it is kept no longer
    QWidget *m_anchor = this;
    bool m_isCompact = false;
};

}  // namespace quorbel
