#include "reports/ReportTableModel.h"

#include "platform/gui/Icons.h"
#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

namespace quorbel {

namespace {

/// In English, as files have it.
const char *title(ReportField field) {
    switch (field) {
        case ReportField::kDate:
            return QT_TRANSLATE_NOOP("quorbel::ReportTableModel", "Date");
        case ReportField::kPriority:
            return QT_TRANSLATE_NOOP("quorbel::ReportTableModel", "Priority");
        case ReportField::kHost:
            return QT_TRANSLATE_NOOP("quorbel::ReportTableModel", "Host");
        default:
            return QT_TRANSLATE_NOOP("quorbel::ReportTableModel", "Message");
    }
}

constexpr std::size_t kMostLookedAt = 50'000;
constexpr std::size_t kCandidates = 16;

}  // namespace

QString percentText(const GroupShare &share) {
    const auto inAll = static_cast<double>(std::max<std::size_t>(share.inAll, 1));
    const double percent = 100 * static_cast<double>(share.events) / inAll;
    if (share.events > 0 && percent < 1) {
        return ReportTableModel::tr("< 1 %");
    }
    if (share.events < share.inAll && percent > 99) {
        return ReportTableModel::tr("> 99 %");
    }
    return ReportTableModel::tr("%1 %").arg(countText(std::llround(percent)));
}

ReportTableModel::ReportTableModel(QObject *parent)
    : QAbstractTableModel(parent),
      m_columns(reportColumns(ReportKind::kHost)),
      m_collapsedMarker(lineIcon(QStringLiteral("expand"))),
      m_expandedMarker(lineIcon(QStringLiteral("collapse"))) {}

ReportTableModel::~ReportTableModel() = default;

void ReportTableModel::clear() {
    setReport(nullptr);
}

void ReportTableModel::setKind(ReportKind kind) {
    clear();
    m_columns = reportColumns(kind);
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
}

void ReportTableModel::setReport(std::shared_ptr<const ReportEngine> report) {
    beginResetModel();
    m_report = std::move(report);
    ++m_reportNumber;
    m_bySize.reset();
    m_rows.reset(m_report ? m_report->groupCount() : 0);
    m_lastRow = -1;
    endResetModel();
}

std::unique_ptr<ReportTableModel> ReportTableModel::inOrderOfAppearance() const {
    auto model = std::make_unique<ReportTableModel>();
    model->m_columns = m_columns;
    model->setReport(m_report);
    std::vector<bool> isExpanded(m_report ? m_report->groupCount() : 0);
    for (std::size_t group = 0; group < isExpanded.size(); ++group) {
        isExpanded[group] = this->isExpanded(group);
    }
    model->setExpanded(std::move(isExpanded), false);
    return model;
}

const GroupsBySize &ReportTableModel::bySize() const {
    if (!m_bySize) {
        m_bySize = m_report ? GroupsBySize(*m_report) : GroupsBySize();
    }
    return *m_bySize;
}

std::size_t ReportTableModel::groupAt(std::size_t slot) const {
    return m_isLargestFirst ? bySize().at(slot) : slot;
}

std::size_t ReportTableModel::slotOf(std::size_t group) const {
    return m_isLargestFirst ? bySize().placeOf(group) : group;
}

bool ReportTableModel::isExpanded(std::size_t group) const {
    return m_rows.isExpanded(slotOf(group));
}

GroupShare ReportTableModel::share(std::size_t group) const {
    return {m_report->detailCount(group), m_report->largestGroup(), m_report->eventCount()};
}

ReportRows::Place ReportTableModel::placeOf(int row) const {
    if (row != m_lastRow) {
        m_lastPlace = m_rows.at(static_cast<std::size_t>(row));
        m_lastPlace.group = groupAt(m_lastPlace.group);
        m_lastRow = row;
    }
    return m_lastPlace;
}

int ReportTableModel::rowOf(const ReportRows::Place &place) const {
    const std::size_t row = m_rows.rowOf(slotOf(place.group));
    const bool isShown = place.detail && isExpanded(place.group);
    return static_cast<int>(isShown ? row + 1 + *place.detail : row);
}

int ReportTableModel::rowOfNextSmaller(int row) const {
    const GroupsBySize &groups = bySize();
    const std::size_t next = row < 0 ? 0 : groups.placeOf(placeOf(row).group) + 1;
    return next < groups.count() ? rowOf({groups.at(next), std::nullopt}) : -1;
}

int ReportTableModel::rowOfNextLarger(int row) const {
    const GroupsBySize &groups = bySize();
    const std::size_t place = row < 0 ? groups.count() : groups.placeOf(placeOf(row).group);
    return place > 0 ? rowOf({groups.at(place - 1), std::nullopt}) : -1;
}

int ReportTableModel::detailBelow(int row) const {
    const auto found = m_rows.detailBelow(static_cast<std::size_t>(row));
    return found ? static_cast<int>(*found) : -1;
}

int ReportTableModel::detailAbove(int row) const {
    const auto found = m_rows.detailAbove(static_cast<std::size_t>(row));
    return found ? static_cast<int>(*found) : -1;
}

std::vector<std::size_t> ReportTableModel::longestGroups(
    const std::function<int(std::string_view value)> &length) const {
    std::vector<std::pair<int, std::size_t>> found;
    const std::size_t groups = m_report ? m_report->groupCount() : 0;
    const std::size_t lookedAt = std::min(groups, kMostLookedAt);
    for (std::size_t i = 0; i < lookedAt; ++i) {
        const std::size_t group = i * groups / lookedAt;
        const std::pair candidate(length(m_report->groupText(group)), group);
        if (found.size() == kCandidates && candidate.first <= found.back().first) {
            continue;
        }
        found.insert(std::ranges::upper_bound(found, candidate, std::greater<>()), candidate);
        found.resize(std::min(found.size(), kCandidates));
    }
    std::vector<std::size_t> result(found.size());
    std::ranges::transform(found, result.begin(), &std::pair<int, std::size_t>::second);
    return result;
}

void ReportTableModel::setAllExpanded(bool expanded) {
    if (m_report) {
        setExpanded(std::vector<bool>(m_report->groupCount(), expanded), m_isLargestFirst);
    }
}

void ReportTableModel::setLargestFirst(bool largestFirst) {
    if (largestFirst == m_isLargestFirst) {
        return;
    }
    std::vector<bool> isExpanded(m_report ? m_report->groupCount() : 0);
    for (std::size_t group = 0; group < isExpanded.size(); ++group) {
        isExpanded[group] = this->isExpanded(group);
    }
    setExpanded(isExpanded, largestFirst);
}

/// `isExpanded` is by group.
void ReportTableModel::setExpanded(std::vector<bool> isExpanded, bool largestFirst) {
    beginResetModel();
    m_isLargestFirst = largestFirst;
    std::vector<bool> bySlot = std::move(isExpanded);
    if (largestFirst) {
        const std::vector<bool> byGroup = bySlot;
        for (std::size_t slot = 0; slot < bySlot.size(); ++slot) {
            bySlot[slot] = byGroup[groupAt(slot)];
        }
    }
    m_rows.reset(std::move(bySlot),
                 [this](std::size_t slot) { return m_report->detailCount(groupAt(slot)); });
    m_lastRow = -1;
    endResetModel();
}

ReportTableModel::Marker ReportTableModel::marker(int row) const {
    const ReportRows::Place place = placeOf(row);
    if (place.detail) {
        return Marker::kNone;
    }
    return isExpanded(place.group) ? Marker::kExpanded : Marker::kCollapsed;
}

std::optional<QString> ReportTableModel::message(int row) const {
    const ReportRows::Place place = placeOf(row);
    if (m_columns[0] == ReportField::kMessage) {
        return toQString(m_report->groupText(place.group));
    }
    return !place.detail ? std::nullopt
                         : std::optional(toQString(m_report->detailText(place.group, *place.detail,
                                                                        ReportField::kMessage)));
}

std::optional<LogLine> ReportTableModel::detail(int row) const {
    const ReportRows::Place place = placeOf(row);
    if (!place.detail) {
        return std::nullopt;
    }
    const auto field = [this, &place](ReportField which) {
        return m_report->detailText(place.group, *place.detail, which);
    };
    return LogLine{field(ReportField::kDate), field(ReportField::kPriority),
                   field(ReportField::kHost), field(ReportField::kMessage)};
}

void ReportTableModel::toggle(int row) {
    const Marker before = marker(row);
    if (before == Marker::kNone) {
        return;
    }
    const std::size_t group = placeOf(row).group;
    const std::size_t details = m_report->detailCount(group);
    const int first = row + 1;
    const int last = row + static_cast<int>(details);
    m_lastRow = -1;
    if (before == Marker::kCollapsed) {
        beginInsertRows({}, first, last);
        m_rows.expand(slotOf(group), details);
        endInsertRows();
    } else {
        beginRemoveRows({}, first, last);
        m_rows.collapse(slotOf(group), details);
        endRemoveRows();
    }
    m_lastRow = -1;
    Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
}

int ReportTableModel::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.count());
}

int ReportTableModel::columnCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : static_cast<int>(kReportColumns);
}

QVariant ReportTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) {
        return {};
    }
    const char *text = title(m_columns[static_cast<std::size_t>(section)]);
    switch (role) {
        case Qt::DisplayRole:
            return tr(text);
        case Qt::EditRole:  // as files have it
            return QString::fromLatin1(text);
        case Qt::TextAlignmentRole:
            return QVariant::fromValue(Qt::AlignLeft | Qt::AlignVCenter);
        default:
            return {};
    }
}

QString ReportTableModel::text(const ReportRows::Place &place, int column) const {
    if (place.detail.has_value() != (column > 0)) {
        return {};
    }
    return toQString(place.detail
                         ? m_report->detailText(place.group, *place.detail,
                                                m_columns[static_cast<std::size_t>(column)])
                         : m_report->groupText(place.group));
}

/// A group's value with its state, how many events it has and how much of all that is.
QString ReportTableModel::spokenGroup(std::size_t group, const QString &value) const {
    const GroupShare share = this->share(group);
    const auto events = static_cast<qint64>(share.events);
    const int number = pluralNumber(events);
    const bool isOpen = isExpanded(group);
    if (events == 1) {
        return (isOpen ? tr("%1, expanded, 1 event, %2") : tr("%1, collapsed, 1 event, %2"))
            .arg(value, percentText(share));
    }
    return (isOpen ? tr("%1, expanded, %2 events, %3", nullptr, number)
                   : tr("%1, collapsed, %2 events, %3", nullptr, number))
        .arg(value, countText(events), percentText(share));
}

QString ReportTableModel::spokenText(const ReportRows::Place &place, int column) const {
    const QString read = paintedRow(text(place, column));
    return place.detail || column > 0 ? read : spokenGroup(place.group, read);
}

QVariant ReportTableModel::data(const QModelIndex &index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const ReportRows::Place place = placeOf(index.row());
    const bool isGroupCell = !place.detail && index.column() == 0;
    switch (role) {
        case Qt::DisplayRole:
            return text(place, index.column());
        case kMarkerRole:
            return QVariant::fromValue(marker(index.row()));
        case kShareRole:
            return place.detail ? QVariant() : QVariant::fromValue(share(place.group));
        case Qt::DecorationRole:
            return !isGroupCell              ? QVariant()
                   : isExpanded(place.group) ? m_expandedMarker
                                             : m_collapsedMarker;
        case Qt::AccessibleTextRole:
            return spokenText(place, index.column());
        default:
            return {};
    }
}

}  // namespace quorbel
