#include "hosts/SilentHosts.h"

#include "hosts/HostTexts.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"
#include "platform/gui/PaintedText.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace quorbel {

namespace {

constexpr int kSignSize = 16;
constexpr int kTextsLeft = 34;
constexpr int kBetween = 8;
constexpr QColor kCaptionColour(0x5b, 0x66, 0x75);

QString usually(const HostRow &row) {
    return row.usualGap ? SilentHosts::tr("usually every %1").arg(HostTexts::gap(*row.usualGap))
                        : QString();
}

class SilentDelegate : public RowDelegate {
public:
    using RowDelegate::RowDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override {
        QStyleOptionViewItem background = option;
        background.text.clear();
        const QWidget *view = option.widget;
        view->style()->drawPrimitive(QStyle::PE_PanelItemViewItem, &background, painter, view);
        const auto &model = static_cast<const SilentHosts::Model &>(*index.model());
        const HostRow &row = model.row(index);
        const int size = sizedToFont(kSignSize);
        const int line = option.rect.height() / 2;
        const QRect sign(option.rect.left() + 2, option.rect.top() + line - size - 1, size, size);
        severityIcon(QStringLiteral("Moderate")).paint(painter, mirrored(option, sign));
        QRect upper = option.rect.adjusted(sizedToFont(kTextsLeft), 0, 0, -line);
        const QString since = HostTexts::since(row.last, model.now());
        painter->setFont(option.font);
        painter->setPen(option.palette.color(QPalette::Text));
        painter->drawText(mirrored(option, upper), Qt::AlignRight | Qt::AlignBottom, since);
        upper.setRight(upper.right() - option.fontMetrics.horizontalAdvance(since) - kBetween);
        paintName(*painter, option.font, mirrored(option, upper), row.name);
        const QRect lower = option.rect.adjusted(sizedToFont(kTextsLeft), line, 0, 0);
        painter->setFont(option.font);
        painter->setPen(kCaptionColour);
        painter->drawText(mirrored(option, lower), Qt::AlignLeft | Qt::AlignTop, usually(row));
    }

    /// Whether the name is whole depends on what stands beside it: it is in the tip always.
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override {
        if (event->type() != QEvent::ToolTip || !index.isValid()) {
            return RowDelegate::helpEvent(event, view, option, index);
        }
        const QString tip = paintedRow(index.data(Qt::ToolTipRole).toString());
        QToolTip::showText(event->globalPos(), u"<p>%1</p>"_qs.arg(tip.toHtmlEscaped()), view);
        return true;
    }

private:
    static QRect mirrored(const QStyleOptionViewItem &option, const QRect &place) {
        return QStyle::visualRect(option.direction, option.rect, place);
    }
    static void paintName(QPainter &painter, QFont font, const QRect &place, const QString &name) {
        font.setBold(true);
        painter.setFont(font);
        const QString painted =
            QFontMetrics(font).elidedText(paintedRow(name), Qt::ElideMiddle, place.width());
        painter.drawText(place, Qt::AlignLeft | Qt::AlignBottom, painted);
    }
};

}  // namespace

int SilentHosts::Model::columnCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : 1;
}

QVariant SilentHosts::Model::data(const QModelIndex &index, int role) const {
    if (!index.isValid()) {
        return {};
    }
    const HostRow &host = row(index);
    switch (role) {
        case Qt::DisplayRole:
        case Qt::EditRole:
            return host.name;
        case Qt::ToolTipRole:
        case Qt::AccessibleTextRole:
            return SilentHosts::tr("%1: silent %2, %3")
                .arg(host.name, HostTexts::since(host.last, m_now), usually(host));
        default:
            return {};
    }
}

SilentHosts::SilentHosts(QWidget *parent) : HostList(parent), m_model(new Model(this)) {
    verticalHeader()->setDefaultSectionSize(sizedToFont(kRowHeight));
    setModel(m_model);
    setItemDelegate(new SilentDelegate(this));
    horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
}

void SilentHosts::show(std::vector<HostRow> overdue, std::int64_t now) {
    overdue.resize(std::min(overdue.size(), kMost));
    for (HostRow &row : overdue) {
        row.silentFor = 0;  // it changes each second, and is not shown
    }
    m_model->setNow(now);
    m_model->setRows(std::move(overdue));
    setFixedHeight(static_cast<int>(rows().size()) * verticalHeader()->defaultSectionSize());
}

void SilentHosts::resizeEvent(QResizeEvent *event) {
    setColumnWidth(0, viewport()->width());
    HostList::resizeEvent(event);
}

}  // namespace quorbel
