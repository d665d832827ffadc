#include "events/find/FindChip.h"

#include "platform/gui/FontSize.h"
#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

#include <utility>

namespace quorbel {

namespace {

constexpr int kWidest = 140;
constexpr int kHeight = 20;
constexpr int kCross = 16;
constexpr int kMargin = 6;
const QColor kEdge(0xc9, 0xd0, 0xd9);
const QColor kFill(0xee, 0xf2, 0xf6);
const QColor kHover(0xe2, 0xe8, 0xef);
const QColor kFocus(0x00, 0x66, 0xcc);
const QColor kCrossColour(0x5b, 0x66, 0x75);

/// In front of a text that events must not have.
QString notText() {
    return FindChip::tr("not") + u' ';
}

}  // namespace

FindChip::FindChip(TextCondition condition, QWidget *parent)
    : QAbstractButton(parent), m_condition(std::move(condition)) {
    setObjectName(QStringLiteral("findCondition"));
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::ArrowCursor);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAttribute(Qt::WA_Hover);
    connect(this, &QAbstractButton::clicked, this, &FindChip::turn);
    describe();
}

QString FindChip::name() const {
    const QString text = paintedRow(toQString(m_condition.pattern.text));
    const bool isExpression = m_condition.pattern.isExpression;
    return (m_condition.isNegated ? notText() : QString()) +
           (isExpression ? QStringLiteral("/%1/") : tr("“%1”")).arg(text);
}

QString FindChip::description() const {
    const TextPattern::Spec &spec = m_condition.pattern;
    const QString sought = paintedRow(toQString(spec.text));
    QString text =
        (m_condition.isNegated ? tr("Does not contain “%1”") : tr("Contains “%1”")).arg(sought);
    if (spec.isExpression) {
        text += QStringLiteral(", ") + tr("a regular expression");
    }
    if (spec.isCaseSensitive) {
        text += QStringLiteral(", ") + tr("capital letters matter");
    }
    return text;
}

void FindChip::describe() {
    setAccessibleName(description());
    setAccessibleDescription(
        tr("Space turns it from “contains” to “does not contain” and back, Delete removes it"));
    setToolTip(QStringLiteral("<p>%1</p><p>%2</p>")
                   .arg(description().toHtmlEscaped(),
                        tr("Click to turn it round, click the cross to remove it")));
    updateGeometry();
    update();
}

void FindChip::turn() {
    m_condition.isNegated = !m_condition.isNegated;
    describe();
    Q_EMIT turned();
}

QFont FindChip::notFont() const {
    QFont bold = font();
    bold.setBold(true);
    return bold;
}

QString FindChip::shownText() const {
    const QString text = m_condition.isNegated ? name().mid(notText().size()) : name();
    return fontMetrics().elidedText(text, Qt::ElideRight, sizedToFont(kWidest));
}

QSize FindChip::sizeHint() const {
    const int before =
        m_condition.isNegated ? QFontMetrics(notFont()).horizontalAdvance(notText()) : 0;
    return {
        kMargin + before + fontMetrics().horizontalAdvance(shownText()) + sizedToFont(kCross) + 2,
        sizedToFont(kHeight)};
}

QRect FindChip::crossRect() const {
    const QRect cross(width() - sizedToFont(kCross), 0, sizedToFont(kCross), height());
    return QStyle::visualRect(layoutDirection(), rect(), cross);
}

void FindChip::paintEvent(QPaintEvent * /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(hasFocus() ? kFocus : kEdge);
    painter.setBrush(underMouse() ? kHover : kFill);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    painter.setPen(palette().color(QPalette::ButtonText));
    const auto mirrored = [this](const QRect &place) {
        return QStyle::visualRect(layoutDirection(), rect(), place);
    };
    QRect place = rect().adjusted(kMargin, 0, 0, 0);
    if (m_condition.isNegated) {
        painter.setFont(notFont());
        painter.drawText(mirrored(place), Qt::AlignVCenter | Qt::AlignLeft, notText());
        place.setLeft(place.left() + painter.fontMetrics().horizontalAdvance(notText()));
        painter.setFont(font());
    }
    painter.drawText(mirrored(place), Qt::AlignVCenter | Qt::AlignLeft, shownText());
    painter.setPen(QPen(kCrossColour, 1.2));
    const QPointF middle = QRectF(crossRect()).center();
    const qreal arm = sizedToFont(3);
    painter.drawLine(middle - QPointF(arm, arm), middle + QPointF(arm, arm));
    painter.drawLine(middle - QPointF(arm, -arm), middle + QPointF(arm, -arm));
}

void FindChip::mousePressEvent(QMouseEvent *event) {
    m_isCrossPressed =
        event->button() == Qt::LeftButton && crossRect().contains(event->position().toPoint());
    if (!m_isCrossPressed) {
        QAbstractButton::mousePressEvent(event);
    }
}

void FindChip::mouseReleaseEvent(QMouseEvent *event) {
    if (!std::exchange(m_isCrossPressed, false)) {
        QAbstractButton::mouseReleaseEvent(event);
    } else if (crossRect().contains(event->position().toPoint())) {
        Q_EMIT removed();
    }
}

void FindChip::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Delete || event->key() == Qt::Key_Backspace) {
        Q_EMIT removed();
    } else {
        QAbstractButton::keyPressEvent(event);
    }
}

}  // namespace quorbel
