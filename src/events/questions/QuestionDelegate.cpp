#include "events/questions/QuestionDelegate.h"

#include "events/questions/MarkColours.h"
#include "events/questions/QuestionModel.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"

#include <QPainter>

#include <algorithm>

namespace quorbel {

namespace {

constexpr int kRow = 28;
constexpr int kTitle = 36;
constexpr int kMargin = 8;
constexpr int kSign = 16;
constexpr int kIndent = 34;  // of the names
constexpr int kGap = 10;
constexpr QColor kTextColour(0x1f, 0x27, 0x33);
constexpr QColor kPaleColour(0x5b, 0x66, 0x75);
constexpr QColor kChosenColour(0xdc, 0xeb, 0xfa);

int widthOf(const QFont &font, const QString &text) {
    return QFontMetrics(font).horizontalAdvance(text);
}

}  // namespace

QSize QuestionDelegate::sizeHint(const QStyleOptionViewItem & /*option*/,
                                 const QModelIndex &index) const {
    const bool isTitle = index.data(QuestionModel::kIsTitle).toBool();
    return {0, sizedToFont(isTitle ? kTitle : kRow)};
}

void QuestionDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                             const QModelIndex &index) const {
    painter->save();
    if (index.data(QuestionModel::kIsTitle).toBool()) {
        paintTitle(*painter, option, index);
    } else {
        paintName(*painter, option, index);
    }
    painter->restore();
}

void QuestionDelegate::paintTitle(QPainter &painter, const QStyleOptionViewItem &option,
                                  const QModelIndex &index) {
    const QRect area =
        option.rect.adjusted(sizedToFont(kMargin), 0, -sizedToFont(kMargin), -sizedToFont(6));
    painter.setPen(kPaleColour);
    painter.setFont(option.font);
    painter.drawText(area, Qt::AlignRight | Qt::AlignBottom,
                     index.data(QuestionModel::kCount).toString());
    QFont bold = option.font;
    bold.setWeight(QFont::DemiBold);
    painter.setFont(bold);
    painter.drawText(area, Qt::AlignLeft | Qt::AlignBottom, index.data().toString());
}

void QuestionDelegate::paintName(QPainter &painter, const QStyleOptionViewItem &option,
                                 const QModelIndex &index) {
    if ((option.state & QStyle::State_Selected) != 0) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(kChosenColour);
        painter.drawRoundedRect(option.rect, 4, 4);
    }
    QRect area = option.rect.adjusted(sizedToFont(kMargin), 0, -sizedToFont(kMargin), 0);
    const bool isNone = index.data(QuestionModel::kIsNone).toBool();
    painter.setPen(isNone ? kPaleColour : kTextColour);
    painter.setFont(option.font);
    const QString count = index.data(QuestionModel::kCount).toString();
    painter.drawText(area, Qt::AlignRight | Qt::AlignVCenter, count);
    paintSign(painter, option, index);
    area.setRight(area.right() - widthOf(option.font, count) - kGap);
    area.setLeft(option.rect.left() + sizedToFont(kIndent));
    const int colour = index.data(QuestionModel::kMark).toInt();
    const int pill = colour < 0 ? 0 : widthOf(option.font, QuestionModel::tr("marks rows")) + kGap;
    const QString name = option.fontMetrics.elidedText(index.data().toString(), Qt::ElideRight,
                                                       std::max(area.width() - pill - kGap, 0));
    painter.drawText(QStyle::visualRect(option.direction, option.rect, area),
                     Qt::AlignLeft | Qt::AlignVCenter, name);
    if (colour >= 0) {
        paintPill(painter, option, area.left() + widthOf(option.font, name) + kGap, colour);
    }
}

void QuestionDelegate::paintSign(QPainter &painter, const QStyleOptionViewItem &option,
                                 const QModelIndex &index) {
    if (!index.data(QuestionModel::kIsKept).toBool()) {
        return;
    }
    const int size = sizedToFont(kSign);
    const auto mirrored = [&option](const QRect &place) {
        return QStyle::visualRect(option.direction, option.rect, place);
    };
    const QPoint begin(option.rect.left() + sizedToFont(kMargin),
                       option.rect.center().y() - size / 2);
    const QRect sign = mirrored({begin, QSize(size, size)});
    const int colour = index.data(QuestionModel::kMark).toInt();
    if (colour < 0) {
        lineIcon(QStringLiteral("filter")).paint(&painter, sign);
        return;
    }
    const MarkLook &look = lookOf(static_cast<MarkColour>(colour));
    painter.save();
    painter.setPen(QColor::fromRgb(look.line));
    painter.setBrush(QColor::fromRgb(look.tint));
    painter.drawRect(sign.adjusted(0, 0, -1, -1));
    painter.restore();
    painter.fillRect(mirrored({begin, QSize(size / 4, size)}), QColor::fromRgb(look.line));
}

void QuestionDelegate::paintPill(QPainter &painter, const QStyleOptionViewItem &option, int left,
                                 int colour) {
    const QString text = QuestionModel::tr("marks rows");
    QFont small = option.font;
    small.setPointSizeF(small.pointSizeF() * 0.85);
    const int height = QFontMetrics(small).height() + 4;
    const QRect area = QStyle::visualRect(option.direction, option.rect,
                                          QRect(left, option.rect.center().y() - height / 2 + 1,
                                                widthOf(small, text) + height, height));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(small);
    painter.setPen(QColor::fromRgb(lookOf(static_cast<MarkColour>(colour)).line));
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(QRectF(area).adjusted(0.5, 0.5, -0.5, -0.5), height / 2.0,
                            height / 2.0);
    painter.drawText(area, Qt::AlignCenter, text);
}

}  // namespace quorbel
