#pragma once

#include "core/SavedFilterStore.h"

#include <QObject>

namespace quorbel {

/// The filters that one can choose by their names: those that the user keeps, in QuorbelFilters.txt
/// in the user's configuration folder ($XDG_CONFIG_HOME, else ~/.config), and the questions that
/// come with the program.
///
/// What changes the user's own returns what went wrong, in English; empty when nothing did.
class FilterLibrary : public QObject {
    Q_OBJECT

public:
    using Filters = std::vector<SavedFilter>;

    /// Reads the user's filters. Those that cannot be read are none until reload() says why.
    explicit FilterLibrary(QObject *parent = nullptr);

    /// What is shown of a question, in the user's language; what the user has named stays as it is.
    [[nodiscard]] static QString nameOf(const SavedFilter &filter);
    [[nodiscard]] static QString aboutOf(const SavedFilter &filter);
    [[nodiscard]] static QString groupOf(const SavedFilter &filter);

    [[nodiscard]] const Filters &kept() const { return m_kept.filters(); }
    /// Reads them when they are asked for first.
    [[nodiscard]] const Filters &questions() const;
    [[nodiscard]] bool isKept(const SavedFilter &filter) const;
    /// Whether there is one of its name, or the filter is a question.
    [[nodiscard]] bool hasName(const SavedFilter &filter) const;
    /// In what colour a filter, or the question that was kept by being marked, marks rows.
    [[nodiscard]] std::optional<MarkColour> markOf(const SavedFilter &filter) const;

    /// Takes over what another window, or an editor, has written since.
    QString reload();
    QString keep(const SavedFilter &filter);
    /// Why such conditions cannot be kept; empty when they can.
    [[nodiscard]] static QString whyNotKept(const EventQuery &query);
    QString rename(const std::string &from, const std::string &to);
    QString remove(const std::string &name);
    /// In no colour: marks no longer. A question that is marked is kept by that.
    QString mark(const SavedFilter &filter, std::optional<MarkColour> colour);
    QString importFrom(const QString &file);
    [[nodiscard]] QString exportTo(const QString &file) const;
    /// One that marks nothing yet, if there is any.
    [[nodiscard]] MarkColour freeColour() const;

Q_SIGNALS:
    /// kept() differs from before.
    void changed();
    /// One of them got another name. Sent before changed().
    void renamed(const std::string &from, const std::string &to);

private:
    [[nodiscard]] Filters::const_iterator find(const SavedFilter &filter) const;
    /// Runs a change of m_kept and tells of it.
    template <typename Change>
    QString change(Change change);

    SavedFilterStore m_kept;
    mutable Filters m_questions;
};

}  // namespace quorbel
