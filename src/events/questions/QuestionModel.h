#pragma once

#include "core/SavedFilter.h"

#include <QAbstractListModel>

#include <optional>
#include <vector>

namespace quorbel {

class FilterLibrary;

/// Kept filters and questions as a list in groups, each under its title, with how many events each
/// means. Those show that have all the words looked for in their name, group or description.
class QuestionModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        kIsTitle = Qt::UserRole,
        kCount,  ///< a text; of a title what the numbers are
        kIsKept,
        kMark,    ///< a MarkColour as a number, or -1
        kIsNone,  ///< whether it is known that no event is meant
    };

    explicit QuestionModel(QObject *parent = nullptr);

    void show(const FilterLibrary &library);
    void setSearch(const QString &words);
    /// All of them, also those that do not show, in their order.
    [[nodiscard]] std::vector<EventQuery> queries() const;
    /// By the order of queries(); nothing for those that are not counted yet.
    void setCounts(const std::vector<std::optional<std::size_t>> &counts);

    /// Null for a title.
    [[nodiscard]] const SavedFilter *filterAt(const QModelIndex &index) const;
    [[nodiscard]] QModelIndex find(const std::string &name, bool isKept) const;
    /// The next one that can be chosen, from `row` on in steps of `step`; invalid for none.
    [[nodiscard]] QModelIndex choosable(int row, int step) const;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    struct Entry {
        SavedFilter filter;
        bool isKept;
        QString group;
        std::optional<std::size_t> count{};
    };
    struct Row {
        std::optional<std::size_t> entry;
        QString title;
    };

    void add(const SavedFilter &filter, bool isKept);
    void arrange();
    [[nodiscard]] bool isLookedFor(const Entry &entry) const;
    [[nodiscard]] QVariant titleData(const Row &row, int role) const;
    [[nodiscard]] static QVariant entryData(const Entry &entry, int role);
    [[nodiscard]] static QString countOf(const Entry &entry);
    [[nodiscard]] static QString spokenText(const Entry &entry, const QString &name);

    std::vector<Entry> m_entries;
    std::vector<Row> m_rows;
    QStringList m_words;
};

}  // namespace quorbel
