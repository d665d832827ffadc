#include "events/find/FindChoice.h"

#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"
#include "platform/gui/LookProperty.h"
#include "platform/gui/PaintedText.h"

#include <QStyle>
#include <QStyleOptionButton>
#include <QStylePainter>

namespace quorbel {

namespace {

constexpr int kNarrowest = 48;
constexpr int kArrow = 14;
const QColor kAccent(0x00, 0x57, 0xad);

}  // namespace

FindChoice::FindChoice(const char *name, const QString &title, const QString &purpose,
                       QWidget *parent)
    : QPushButton(title, parent), m_title(title), m_purpose(purpose) {
    setObjectName(QString::fromLatin1(name));
    setProperty("role", QStringLiteral("choice"));
    setProperty("inUse", false);
    setAutoDefault(false);
    setAccessibleName(title);
    setToolTip(purpose);
    connect(this, &QAbstractButton::clicked, this, [this] { openBelow(*this); });
}

void FindChoice::showValue(const QString &value, const QString &shortened) {
    m_value = value;
    ensurePolished();
    const QString shown = paintedRow(value);
    QString text = fontMetrics().elidedText(shortened.isEmpty() ? shown : paintedRow(shortened),
                                            Qt::ElideRight, sizedToFont(m_widest));
    setText(value.isEmpty() ? m_title : text.replace(u'&', QStringLiteral("&&")));
    setAccessibleName(value.isEmpty() ? m_title : m_title + QStringLiteral(": ") + shown);
    // As plain text: a host's name may look like markup.
    setToolTip(value.isEmpty() ? m_purpose
                               : QStringLiteral("<p>%1</p>").arg(accessibleName().toHtmlEscaped()));
    setLookProperty(*this, "inUse", !value.isEmpty());
    updateGeometry();
    Q_EMIT changed();
}

QSize FindChoice::minimumSizeHint() const {
    const QSize full = sizeHint();
    return {std::min(full.width(), sizedToFont(kNarrowest)), full.height()};
}

void FindChoice::paintEvent(QPaintEvent * /*event*/) {
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    const QRect inside = style()->subElementRect(QStyle::SE_PushButtonContents, &option, this);
    const int image = icon().isNull() ? 0 : iconSize().width() + 4;
    option.text = fontMetrics().elidedText(text(), Qt::ElideRight, inside.width() + 1 - image);
    painter.drawControl(QStyle::CE_PushButton, option);
    const int size = sizedToFont(kArrow);
    const QIcon arrow = lineIcon(QStringLiteral("down"), isInUse() ? kAccent : QColor());
    // The style mirrors the inside.
    const int end = QStyle::visualRect(layoutDirection(), rect(), inside).right();
    const QRect place(end + 3, (height() - size) / 2, size, size);
    arrow.paint(&painter, QStyle::visualRect(layoutDirection(), rect(), place));
}

}  // namespace quorbel
