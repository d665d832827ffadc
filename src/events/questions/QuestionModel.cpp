#include "events/questions/QuestionModel.h"

#include "events/questions/FilterLibrary.h"
#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"

#include <algorithm>

namespace quorbel {

QuestionModel::QuestionModel(QObject *parent) : QAbstractListModel(parent) {}

void QuestionModel::show(const FilterLibrary &library) {
    m_entries.clear();
    for (const SavedFilter &filter : library.kept()) {
        add(filter, true);
    }
    for (const SavedFilter &filter : library.questions()) {
        add(filter, false);
    }
    arrange();
}

void QuestionModel::add(const SavedFilter &filter, bool isKept) {
    m_entries.push_back(
        {filter, isKept, isKept ? tr("Kept filters") : FilterLibrary::groupOf(filter)});
}

void QuestionModel::setSearch(const QString &words) {
    m_words = words.simplified().split(u' ', Qt::SkipEmptyParts);
    arrange();
}

bool QuestionModel::isLookedFor(const Entry &entry) const {
    const QString text = FilterLibrary::nameOf(entry.filter) + u'\n' + entry.group + u'\n' +
                         FilterLibrary::aboutOf(entry.filter);
    return std::ranges::all_of(
        m_words, [&](const QString &word) { return text.contains(word, Qt::CaseInsensitive); });
}

void QuestionModel::arrange() {
    beginResetModel();
    m_rows.clear();
    QString group;
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        if (!isLookedFor(m_entries[i])) {
            continue;
        }
        if (m_rows.empty() || m_entries[i].group != group) {
            group = m_entries[i].group;
            m_rows.push_back({std::nullopt, group});
        }
        m_rows.push_back({i, {}});
    }
    if (m_rows.empty()) {
        m_rows.push_back({std::nullopt, tr("No filter or question has these words.")});
    }
    endResetModel();
}

std::vector<EventQuery> QuestionModel::queries() const {
    std::vector<EventQuery> queries;
    for (const Entry &entry : m_entries) {
        queries.push_back(entry.filter.query);
    }
    return queries;
}

void QuestionModel::setCounts(const std::vector<std::optional<std::size_t>> &counts) {
    bool isOther = false;
    for (std::size_t i = 0; i < std::min(counts.size(), m_entries.size()); ++i) {
        isOther = isOther || m_entries[i].count != counts[i];
        m_entries[i].count = counts[i];
    }
    if (isOther) {
        Q_EMIT dataChanged(index(0), index(rowCount() - 1));
    }
}

const SavedFilter *QuestionModel::filterAt(const QModelIndex &index) const {
    const auto entry =
        index.isValid() ? m_rows[static_cast<std::size_t>(index.row())].entry : std::nullopt;
    return entry ? &m_entries[*entry].filter : nullptr;
}

QModelIndex QuestionModel::find(const std::string &name, bool isKept) const {
    for (int row = 0; row < rowCount(); ++row) {
        const SavedFilter *filter = filterAt(index(row));
        if (filter != nullptr && filter->name == name &&
            index(row).data(kIsKept).toBool() == isKept) {
            return index(row);
        }
    }
    return {};
}

QModelIndex QuestionModel::choosable(int row, int step) const {
    while (row >= 0 && row < rowCount()) {
        if (filterAt(index(row)) != nullptr) {
            return index(row);
        }
        row += step;
    }
    return {};
}

int QuestionModel::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

Qt::ItemFlags QuestionModel::flags(const QModelIndex &index) const {
    return filterAt(index) == nullptr ? Qt::NoItemFlags : Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}

QString QuestionModel::countOf(const Entry &entry) {
    return entry.count ? countText(static_cast<qint64>(*entry.count)) : QStringLiteral("…");
}

QVariant QuestionModel::data(const QModelIndex &index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const Row &row = m_rows[static_cast<std::size_t>(index.row())];
    return row.entry ? entryData(m_entries[*row.entry], role) : titleData(row, role);
}

QVariant QuestionModel::titleData(const Row &row, int role) const {
    switch (role) {
        case Qt::DisplayRole:
            return row.title;
        case kIsTitle:
            return true;
        case kCount:
            return &row == &m_rows.front() && m_rows.size() > 1 ? tr("events") : QString();
        default:
            return {};
    }
}

QString QuestionModel::spokenText(const Entry &entry, const QString &name) {
    if (!entry.count) {
        return (entry.filter.mark ? tr("%1, marks rows, still counting its events")
                                  : tr("%1, still counting its events"))
            .arg(name);
    }
    const int plural = pluralNumber(static_cast<qint64>(*entry.count));
    return (entry.filter.mark ? tr("%1, marks rows, %2 events", nullptr, plural)
                              : tr("%1, %2 events", nullptr, plural))
        .arg(name, countOf(entry));
}

QVariant QuestionModel::entryData(const Entry &entry, int role) {
    const QString name = paintedRow(FilterLibrary::nameOf(entry.filter));
    switch (role) {
        case Qt::DisplayRole:
            return name;
        case Qt::AccessibleTextRole:
            return spokenText(entry, name);
        case Qt::ToolTipRole:
            return QStringLiteral("<p>%1</p>").arg(name.toHtmlEscaped());
        case kIsTitle:
            return false;
        case kCount:
            return countOf(entry);
        case kIsKept:
            return entry.isKept;
        case kMark:
            return entry.filter.mark ? static_cast<int>(*entry.filter.mark) : -1;
        case kIsNone:
            return entry.count == 0U;
        default:
            return {};
    }
}

}  // namespace quorbel
