#include "events/EventTableModel.h"

#include "platform/gui/Icons.h"
#include "platform/gui/KnownText.h"
#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"

#include <algorithm>

namespace quorbel {

namespace {

constexpr std::array<const char *, EventTableModel::kColumnCount> kTitles = {
    QT_TRANSLATE_NOOP("quorbel::EventTableModel", "Rating"),
    QT_TRANSLATE_NOOP("quorbel::EventTableModel", "Date"),
    QT_TRANSLATE_NOOP("quorbel::EventTableModel", "Priority"),
    QT_TRANSLATE_NOOP("quorbel::EventTableModel", "Host"),
    QT_TRANSLATE_NOOP("quorbel::EventTableModel", "Message")};

QString orEmpty(const std::optional<std::string_view> &text) {
    return toQString(text.value_or(std::string_view()));
}

}  // namespace

EventTableModel::EventTableModel(EventList &list, QObject *parent)
    : EventTableModel(*new ArrangedEvents(list), parent) {
    m_own.reset(&m_events);
}

EventTableModel::EventTableModel(ArrangedEvents &events, QObject *parent)
    : QAbstractTableModel(parent), m_events(events), m_list(events.list()) {
    for (std::size_t level = 0; level < m_images.size(); ++level) {
        m_images[level] =
            severityIcon(toQString(severityLevelName(static_cast<std::int64_t>(level))));
    }
    m_events.addObserver(*this);
}

EventTableModel::~EventTableModel() {
    m_events.removeObserver(*this);
}

int EventTableModel::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_events.size());
}

int EventTableModel::columnCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : kColumnCount;
}

QVariant EventTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= kColumnCount) {
        return {};
    }
    const char *title = kTitles[static_cast<std::size_t>(section)];
    switch (role) {
        case Qt::DisplayRole:
            return tr(title);
        case Qt::EditRole:  // as files have it
            return QString::fromLatin1(title);
        case Qt::TextAlignmentRole:
            return QVariant::fromValue(Qt::AlignLeft | Qt::AlignVCenter);
        default:
            return {};
    }
}

QString EventTableModel::text(std::size_t row, int column) const {
    switch (column) {
        case kRating:
            return toQString(m_list.image(row));
        case kDate:
            return toQString(m_list.date(row).value_or(std::string()));
        case kPriority:
            return orEmpty(m_list.priority(row));
        case kHost:
            return orEmpty(m_list.host(row));
        default:
            return orEmpty(m_list.message(row));
    }
}

QVariant EventTableModel::data(const QModelIndex &index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    if (role == Qt::AccessibleDescriptionRole) {
        return m_description ? m_description(index.row()) : QString();
    }
    const std::size_t row = m_events.listRow(static_cast<std::size_t>(index.row()));
    if (role == Qt::DisplayRole) {
        return text(row, index.column());
    }
    if (role == Qt::AccessibleTextRole) {
        const QString read = paintedRow(text(row, index.column()));
        return index.column() == kRating ? knownName(read) : read;
    }
    if (role == Qt::DecorationRole && index.column() == kRating) {
        const std::string_view image = m_list.image(row);
        for (std::size_t level = 0; level < m_images.size(); ++level) {
            if (image == severityLevelName(static_cast<std::int64_t>(level))) {
                return m_images[level];
            }
        }
    }
    return {};
}

void EventTableModel::refreshAll() {
    if (const int rows = rowCount(); rows > 0) {
        Q_EMIT dataChanged(index(0, 0), index(rows - 1, kColumnCount - 1));
    }
}

void EventTableModel::rowsWillBeInsertedAtTop(std::size_t count) {
    beginInsertRows({}, 0, static_cast<int>(count) - 1);
}
void EventTableModel::rowsWereInserted(std::size_t /*count*/) {
    endInsertRows();
}

void EventTableModel::rowsWillBeRemoved(std::size_t first, std::size_t count) {
    beginRemoveRows({}, static_cast<int>(first), static_cast<int>(first + count - 1));
}
void EventTableModel::rowsWereRemoved() {
    endRemoveRows();
}

void EventTableModel::listWillChangeAtLarge() {
    beginResetModel();
}
void EventTableModel::listChangedAtLarge() {
    endResetModel();
}

}  // namespace quorbel
