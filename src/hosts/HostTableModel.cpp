#include "hosts/HostTableModel.h"

#include "hosts/HostTexts.h"
#include "platform/gui/Icons.h"
#include "platform/gui/QtText.h"

#include <QBrush>
#include <QFont>
#include <QHash>
#include <QPixmap>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace quorbel {

namespace {

constexpr QColor kPale(0x5b, 0x66, 0x75);
constexpr int kAnyIconSize = 64;
/// More at once are sooner taken out together.
constexpr auto kMostTakenOut = 32;

constexpr const char *kTitles[] = {
    QT_TRANSLATE_NOOP("quorbel::HostTableModel", "Host"),
    QT_TRANSLATE_NOOP("quorbel::HostTableModel", "First seen"),
    QT_TRANSLATE_NOOP("quorbel::HostTableModel", "Last seen"),
    QT_TRANSLATE_NOOP("quorbel::HostTableModel", "Today"),
    QT_TRANSLATE_NOOP("quorbel::HostTableModel", "Daily mean"),
    QT_TRANSLATE_NOOP("quorbel::HostTableModel", "Severe"),
    QT_TRANSLATE_NOOP("quorbel::HostTableModel", "Usual gap"),
    QT_TRANSLATE_NOOP("quorbel::HostTableModel", "Silent for"),
};
constexpr const char *kTips[] = {
    QT_TRANSLATE_NOOP("quorbel::HostTableModel", "As the service reports it"),
    QT_TRANSLATE_NOOP("quorbel::HostTableModel",
                      "The oldest event that the log held when the window was started"),
    QT_TRANSLATE_NOOP("quorbel::HostTableModel", "The event that came last"),
    QT_TRANSLATE_NOOP("quorbel::HostTableModel", "Events that came since midnight"),
    QT_TRANSLATE_NOOP("quorbel::HostTableModel", "Events a day, without today"),
    QT_TRANSLATE_NOOP("quorbel::HostTableModel", "Share of events that are rated severe"),
    QT_TRANSLATE_NOOP("quorbel::HostTableModel", "How often the host usually sends"),
    QT_TRANSLATE_NOOP("quorbel::HostTableModel", "For how long nothing has come"),
};

/// Whole minutes, so that hosts that send now do not change places each second.
std::int64_t minutesSilent(const HostRow &row) {
    return row.silentFor / 60;
}

/// What a column is sorted by, upwards.
std::tuple<double, double> sortKey(const HostRow &row, int column) {
    switch (column) {
        case HostTableModel::kFirst:
            return {static_cast<double>(row.first), 0};
        case HostTableModel::kLast:
            return {static_cast<double>(row.last), 0};
        case HostTableModel::kToday:
            return {static_cast<double>(row.today), 0};
        case HostTableModel::kMean:
            return {row.dailyMean.value_or(-1), 0};
        case HostTableModel::kSevereShare:
            return {row.severeShare, 0};
        case HostTableModel::kGap:
            return {row.usualGap.value_or(1e18), 0};
        case HostTableModel::kSilent:
            return {row.isOverdue ? 1 : 0, static_cast<double>(minutesSilent(row))};
        default:
            return {0, 0};
    }
}

}  // namespace

HostTableModel::HostTableModel(QObject *parent)
    : QAbstractTableModel(parent), m_overdue(severityIcon(QStringLiteral("Moderate"))) {
    QPixmap nothing(kAnyIconSize, kAnyIconSize);
    nothing.fill(Qt::transparent);
    m_none = QIcon(nothing);
    m_bold.setBold(true);
}

int HostTableModel::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_order.size());
}

int HostTableModel::columnCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : kColumnCount;
}

bool HostTableModel::comesBefore(const HostRow &one, const HostRow &other) const {
    const auto left = sortKey(one, m_sortColumn);
    const auto right = sortKey(other, m_sortColumn);
    if (left != right) {
        return m_direction == Qt::AscendingOrder ? left < right : left > right;
    }
    const int names = QString::compare(one.name, other.name, Qt::CaseInsensitive);
    if (m_sortColumn == kHost && names != 0) {
        return m_direction == Qt::AscendingOrder ? names < 0 : names > 0;
    }
    // Among equals the loudest, as far as that stays the same for a while.
    const auto loudness = [](const HostRow &row) { return row.dailyMean.value_or(0); };
    if (loudness(one) != loudness(other)) {
        return loudness(one) > loudness(other);
    }
    return names != 0 ? names < 0 : one.name < other.name;
}

/// The rows in their order. Most stand right already: those that do not are taken out, and merged
/// into the others.
HostTableModel::Places HostTableModel::arranged() const {
    const auto before = [this](Place one, Place other) {
        return comesBefore(m_hosts[one], m_hosts[other]);
    };
    Places kept;
    Places moved;
    for (const Place place : m_order) {
        if (kept.empty() || !before(place, kept.back())) {
            kept.push_back(place);
        } else {  // either of the two may be the one that stands wrong
            moved.insert(moved.end(), {kept.back(), place});
            kept.pop_back();
        }
    }
    std::ranges::sort(moved, before);
    Places order;
    order.reserve(m_order.size());
    std::ranges::merge(kept, moved, std::back_inserter(order), before);
    return order;
}

void HostTableModel::arrange() {
    Places order = arranged();
    if (order == m_order) {
        return;
    }
    Q_EMIT layoutAboutToBeChanged();
    std::vector<int> rows(m_hosts.size());
    for (int row = 0; const Place place : order) {
        rows[place] = row++;
    }
    const QModelIndexList before = persistentIndexList();
    QModelIndexList after;
    for (const QModelIndex &was : before) {
        const Place place = m_order[static_cast<std::size_t>(was.row())];
        after.append(index(rows[place], was.column()));
    }
    m_order = std::move(order);
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged();
}

void HostTableModel::tellOfChanges() {
    if (!m_order.empty()) {
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, kColumnCount - 1));
    }
}

/// Where the hosts that are shown stand among others. They are looked for by their names only where
/// another one stands at their place.
HostTableModel::Places HostTableModel::placesIn(const std::vector<HostRow> &hosts) const {
    const auto isAtItsPlace = [&](Place place) {
        return place < hosts.size() && place < m_hosts.size() &&
               hosts[place].name == m_hosts[place].name;
    };
    QHash<QString, Place> others;
    for (Place place = 0; place < hosts.size(); ++place) {
        if (!isAtItsPlace(place)) {
            others.insert(hosts[place].name, place);
        }
    }
    Places places(m_hosts.size());
    for (Place place = 0; place < places.size(); ++place) {
        places[place] = isAtItsPlace(place) ? place : others.value(m_hosts[place].name, kNowhere);
    }
    return places;
}

void HostTableModel::dropGone(const Places &places) {
    const auto isGone = [&places](Place place) { return places[place] == kNowhere; };
    const auto gone = std::ranges::count_if(m_order, isGone);
    if (gone > kMostTakenOut) {
        beginResetModel();
        std::erase_if(m_order, isGone);
        endResetModel();
        return;
    }
    for (int row = rowCount() - 1; row >= 0 && gone > 0; --row) {
        if (isGone(m_order[static_cast<std::size_t>(row)])) {
            beginRemoveRows({}, row, row);
            m_order.erase(m_order.begin() + row);
            endRemoveRows();
        }
    }
}

/// `places` are those of the hosts that were shown before.
void HostTableModel::addNew(const Places &places) {
    std::vector<bool> isShown(m_hosts.size());
    for (const Place place : places) {
        if (place != kNowhere) {
            isShown[place] = true;
        }
    }
    const auto count = static_cast<int>(std::ranges::count(isShown, false));
    if (count > 0) {
        beginInsertRows({}, rowCount(), rowCount() + count - 1);
        for (Place place = 0; place < m_hosts.size(); ++place) {
            if (!isShown[place]) {
                m_order.push_back(place);
            }
        }
        endInsertRows();
    }
}

void HostTableModel::setRows(std::vector<HostRow> hosts) {
    const Places places = placesIn(hosts);
    dropGone(places);
    for (Place &place : m_order) {
        place = places[place];
    }
    m_hosts = std::move(hosts);
    addNew(places);
    if (!m_isOrderKept) {
        arrange();
    }
    tellOfChanges();
}

void HostTableModel::sort(int column, Qt::SortOrder order) {
    m_sortColumn = column < 0 ? kSilent : column;
    m_direction = order;
    arrange();
}

void HostTableModel::setDateFormat(const std::string &setting) {
    if (m_dateSetting != setting) {
        m_dateSetting = setting;
        const std::string format =
            setting.empty() ? std::string(DateFormat::kDefaultPattern) : setting;
        m_moments = std::make_unique<DateFormat>(format);
        m_days = std::make_unique<DateFormat>(format.substr(0, format.find(' ')));
    }
}

QString HostTableModel::render(const DateFormat *format, std::int64_t moment) {
    return format == nullptr ? QString() : toQString(format->render(static_cast<double>(moment)));
}

QString HostTableModel::gapText(const HostRow &row) const {
    if (!row.isExpected) {
        return tr("not expected");
    }
    if (row.usualGap) {
        return HostTexts::gap(*row.usualGap);
    }
    return row.isLearning ? tr("learning") : tr("irregular");
}

QString HostTableModel::text(const HostRow &row, int column) const {
    switch (column) {
        case kHost:
            return row.name;
        case kFirst:
            return render(m_days.get(), row.first);
        case kLast:
            return render(m_moments.get(), row.last);
        case kToday:
            return countText(static_cast<qint64>(row.today));
        case kMean:
            return row.dailyMean ? countText(std::llround(*row.dailyMean)) : QStringLiteral("—");
        case kSevereShare:
            return HostTexts::share(row.severeShare);
        case kGap:
            return gapText(row);
        case kSilent:
            return HostTexts::silence(row.silentFor);
        default:
            return {};
    }
}

bool HostTableModel::isPale(const HostRow &row, int column) const {
    switch (column) {
        case kToday:
            return row.today == 0;
        case kMean:
            return !row.dailyMean;
        case kSevereShare:
            return row.severeShare == 0;
        case kGap:
            return !row.usualGap || !row.isExpected;
        default:
            return false;
    }
}

QVariant HostTableModel::data(const QModelIndex &index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const HostRow &host = row(index.row());
    const int column = index.column();
    switch (role) {
        case Qt::DisplayRole:
            return text(host, column);
        case Qt::EditRole:
            return column == kHost ? host.name : text(host, column);
        case Qt::DecorationRole:
            return column == kHost ? QVariant(host.isOverdue ? m_overdue : m_none) : QVariant();
        case Qt::FontRole:
            return host.isOverdue && (column == kHost || column == kSilent) ? QVariant(m_bold)
                                                                            : QVariant();
        case Qt::ForegroundRole:
            return isPale(host, column) ? QVariant(QBrush(kPale)) : QVariant();
        case Qt::TextAlignmentRole:
            return column >= kToday ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
        case Qt::AccessibleTextRole:
            return column == kSilent && host.isOverdue ? tr("%1, overdue").arg(text(host, column))
                                                       : text(host, column);
        default:
            return {};
    }
}

QVariant HostTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal) {
        return {};
    }
    switch (role) {
        case Qt::DisplayRole:
            return tr(kTitles[section]);
        case Qt::ToolTipRole:
            return tr(kTips[section]);
        case Qt::TextAlignmentRole:
            return QVariant((section >= kToday ? Qt::AlignRight : Qt::AlignLeft) |
                            Qt::AlignVCenter);
        default:
            return {};
    }
}

}  // namespace quorbel
