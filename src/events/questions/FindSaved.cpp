#include "events/questions/FindSaved.h"

#include "events/questions/FilterLibrary.h"
#include "events/questions/QuestionPanel.h"
#include "platform/gui/AlertBox.h"
#include "platform/gui/FilePanel.h"
#include "platform/gui/Icons.h"
#include "platform/gui/KnownText.h"
#include "platform/gui/QtText.h"

#include <utility>

namespace quorbel {

namespace {

const QColor kAccent(0x00, 0x57, 0xad);

}  // namespace

FindSaved::FindSaved(QWidget *parent)
    : FindChoice("findSaved", tr("Questions"),
                 tr("Choose a kept filter or a ready-made question (Ctrl+L)"), parent) {
    setIcon(lineIcon(QStringLiteral("bookmark")));
}

void FindSaved::attach(EventList &events, FilterLibrary &library,
                       std::function<EventQuery()> current, std::function<QDateTime()> clock) {
    m_library = &library;
    m_current = std::move(current);
    m_panel = new QuestionPanel(events, library, std::move(clock), this);
    connect(m_panel, &QuestionPanel::chosen, this, &FindSaved::choose);
    connect(m_panel, &QuestionPanel::ended, this, &FindSaved::clear);
    connect(m_panel, &QuestionPanel::importAsked, this, &FindSaved::importFilters);
    connect(m_panel, &QuestionPanel::exportAsked, this, &FindSaved::exportFilters);
    connect(m_panel, &QuestionPanel::failed, this,
            [this](const QString &problem) { tell(problem); });
    connect(m_library, &FilterLibrary::renamed, this, &FindSaved::takeName);
    connect(m_library, &FilterLibrary::changed, this, &FindSaved::loseName);
}

void FindSaved::setCompact(bool isCompact) {
    m_isCompact = isCompact;
    if (!isInUse()) {
        setText(isCompact ? QString() : title());
    }
}

void FindSaved::addTo(EventQuery &query) const {
    if (m_chosen) {
        query = bothOf(query, m_chosen->query);
    }
}

void FindSaved::takeFrom(const EventQuery &query) {
    m_chosen = SavedFilter{.name = {}, .group = {}, .about = {}, .query = query, .mark = {}};
    showState(tr("Unnamed filter"));
}

void FindSaved::clear() {
    m_chosen.reset();
    showState({});
}

void FindSaved::choose(const SavedFilter &filter) {
    m_chosen = filter;
    showState(FilterLibrary::nameOf(filter));
}

void FindSaved::takeName(const std::string &from, const std::string &to) {
    if (m_chosen && m_chosen->name == from) {
        SavedFilter renamed = *m_chosen;
        renamed.name = to;
        if (m_library->isKept(renamed)) {
            nameChosen(to);
        }
    }
}

void FindSaved::loseName() {
    if (m_chosen && !m_chosen->name.empty() && !m_library->hasName(*m_chosen)) {
        nameChosen({});
    }
}

/// It means what it meant.
void FindSaved::nameChosen(const std::string &name) {
    m_chosen->name = name;
    m_panel->setInForce(*m_chosen);
    showState(name.empty() ? tr("Unnamed filter") : toQString(name));
}

void FindSaved::showState(const QString &value) {
    setIcon(lineIcon(QStringLiteral("bookmark"), value.isEmpty() ? QColor() : kAccent));
    showValue(value);
    setCompact(m_isCompact);
}

void FindSaved::openBelow(QWidget &anchor) {
    if (m_panel == nullptr) {
        return;
    }
    m_anchor = &anchor;
    if (const QString problem = m_library->reload(); !problem.isEmpty()) {
        tell(problem, [this] { openPanel(); });
    } else {
        openPanel();
    }
}

void FindSaved::openPanel() {
    m_panel->open(*m_anchor, m_current(), m_chosen ? &*m_chosen : nullptr);
}

void FindSaved::importFilters() {
    openFilePanel(
        this,
        {.message = tr("Import filters"), .extensions = {QStringLiteral("txt")}, .folder = {}},
        [this](const QString &path) { importFrom(path); });
}

void FindSaved::importFrom(const QString &path) {
    const std::size_t before = m_library->kept().size();
    if (const QString problem = m_library->importFrom(path); !problem.isEmpty()) {
        tell(problem);
        return;
    }
    const std::size_t added = m_library->kept().size() - before;
    openAlert(this,
              {added == 1 ? tr("1 filter was added")
                          : tr("%1 filters were added", nullptr, static_cast<int>(added))
                                .arg(countText(static_cast<qint64>(added))),
               added == 0 ? tr("All filters of the file are kept already.") : QString(),
               {},
               {}},
              [this](const AlertAnswer & /*answer*/) { openPanel(); });
}

void FindSaved::exportFilters() {
    openFilePanel(this,
                  {.message = tr("Export the kept filters"),
                   .extensions = {QStringLiteral("txt")},
                   .folder = {},
                   .name = QStringLiteral("Quorbel filters.txt"),
                   .save = true},
                  [this](const QString &path) {
                      if (const QString problem = m_library->exportTo(path); !problem.isEmpty()) {
                          tell(problem);
                      }
                  });
}

void FindSaved::tell(const QString &problem, std::function<void()> then) {
    openAlert(this, {tr("The kept filters stay as they are"), knownProblem(problem) + u'.', {}, {}},
              [then = std::move(then)](const AlertAnswer & /*answer*/) {
                  if (then) {
                      then();
                  }
              });
}

}  // namespace quorbel
