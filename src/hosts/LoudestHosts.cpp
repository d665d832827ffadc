#include "hosts/LoudestHosts.h"

#include "hosts/HostTexts.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/QtText.h"

#include <QHeaderView>
#include <QPainter>

#include <algorithm>

namespace quorbel {

namespace {

constexpr int kBarHeight = 7;
constexpr int kCountWidth = 78;
constexpr int kShareWidth = 56;
constexpr int kNamePercent = 26;
constexpr QColor kBarColour(0x76, 0x81, 0x8f);
constexpr QColor kOutlineColour(0x5b, 0x66, 0x75);

class BarDelegate : public RowDelegate {
public:
    using RowDelegate::RowDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override {
        RowDelegate::paint(painter, option, index);
        const auto &model = static_cast<const LoudestHosts::Model &>(*index.model());
        const auto width = [&](std::uint64_t count) {
            return static_cast<int>(static_cast<double>(count) /
                                    static_cast<double>(model.longest()) *
                                    (option.rect.width() - 1));
        };
        const HostRow &row = model.row(index);
        const int height = sizedToFont(kBarHeight);
        const QRect bar(option.rect.left(), option.rect.center().y() - height / 2,
                        std::max(width(row.lastDay), 2), height);
        painter->fillRect(QStyle::visualRect(option.direction, option.rect, bar), kBarColour);
        paintDayBefore(*painter, option, bar, width(row.dayBefore));
    }

private:
    static void paintDayBefore(QPainter &painter, const QStyleOptionViewItem &option, QRect bar,
                               int width) {
        const bool isMore = width > bar.width();
        bar.setLeft(isMore ? bar.left() : bar.left() + width - 1);
        bar.setWidth(isMore ? width + 1 : 1);
        bar = QStyle::visualRect(option.direction, option.rect, bar);
        if (isMore) {
            painter.setPen(kOutlineColour);
            painter.drawRect(bar.adjusted(0, 0, -1, -1));
        } else if (width > 0) {
            painter.fillRect(bar, Qt::white);
        }
    }
};

}  // namespace

int LoudestHosts::Model::columnCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : kColumnCount;
}

double LoudestHosts::Model::shareOf(const HostRow &row) const {
    return m_all == 0 ? 0 : static_cast<double>(row.lastDay) / static_cast<double>(m_all);
}

std::uint64_t LoudestHosts::Model::longest() const {
    std::uint64_t longest = 1;
    for (const HostRow &row : rows()) {
        longest = std::max({longest, row.lastDay, row.dayBefore});
    }
    return longest;
}

QString LoudestHosts::Model::text(const HostRow &row, int column) const {
    switch (column) {
        case kHost:
            return row.name;
        case kCount:
            return countText(static_cast<qint64>(row.lastDay));
        case kShare:
            return HostTexts::roundShare(shareOf(row));
        default:
            return {};
    }
}

QVariant LoudestHosts::Model::data(const QModelIndex &index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const HostRow &host = row(index);
    switch (role) {
        case Qt::DisplayRole:
            return text(host, index.column());
        case Qt::EditRole:
            return host.name;
        case Qt::TextAlignmentRole:
            return index.column() == kHost ? QVariant()
                                           : QVariant(Qt::AlignRight | Qt::AlignVCenter);
        case Qt::ForegroundRole:
            return index.column() == kShare ? QVariant(kOutlineColour) : QVariant();
        case Qt::AccessibleTextRole:
            return LoudestHosts::tr("%1: %2 events in 24 hours, the day before %3")
                .arg(host.name, countText(static_cast<qint64>(host.lastDay)),
                     countText(static_cast<qint64>(host.dayBefore)));
        default:
            return {};
    }
}

LoudestHosts::LoudestHosts(QWidget *parent) : HostList(parent), m_model(new Model(this)) {
    verticalHeader()->setDefaultSectionSize(sizedToFont(kRowHeight));
    setModel(m_model);
    setItemDelegateForColumn(kBar, new BarDelegate(this));
    horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setMinimumSectionSize(1);
}

void LoudestHosts::show(const std::vector<HostRow> &rows, std::uint64_t all) {
    m_model->setAll(all);
    m_model->setRows(loudestHosts(rows, kMost));
    viewport()->update();  // shares and the bars' scale are of all
}

void LoudestHosts::resizeEvent(QResizeEvent *event) {
    const int width = viewport()->width();
    const int name = width * kNamePercent / 100;
    const int count = sizedToFont(kCountWidth);
    const int share = sizedToFont(kShareWidth);
    setColumnWidth(kHost, name);
    setColumnWidth(kBar, std::max(width - name - count - share, 1));
    setColumnWidth(kCount, count);
    setColumnWidth(kShare, share);
    HostList::resizeEvent(event);
}

}  // namespace quorbel
