#include "settings/ConsequenceLine.h"

#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"

#include <QAccessible>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>

namespace quorbel {

namespace {

constexpr int kSignSize = 16;

/// What a label needs for one line, which can be more than its font does.
int heightOfLine(const QLabel &label) {
    QLabel probe(QStringLiteral("X"));
    probe.setFont(label.font());
    return probe.sizeHint().height();
}

}  // namespace

ConsequenceLine::ConsequenceLine(QWidget *parent)
    : QWidget(parent),
      m_sign(new QLabel(this)),
      m_consequence(new QLabel(this)),
      m_more(new QLabel(this)) {
    m_sign->setFixedWidth(sizedToFont(kSignSize));
    m_sign->setAlignment(Qt::AlignTop);
    m_consequence->setObjectName(QStringLiteral("consequence"));
    m_consequence->setTextFormat(Qt::PlainText);
    m_consequence->setWordWrap(true);
    m_more->setObjectName(QStringLiteral("consequenceMore"));
    m_more->setTextFormat(Qt::PlainText);
    m_more->setWordWrap(true);
    m_more->setProperty("role", QStringLiteral("caption"));
    auto *texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addWidget(m_consequence);
    texts->addWidget(m_more);
    auto *line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(10);
    line->addWidget(m_sign, 0, Qt::AlignTop);
    line->addLayout(texts, 1);
}

bool ConsequenceLine::event(QEvent *event) {
    const bool done = QWidget::event(event);
    if (event->type() == QEvent::Polish || event->type() == QEvent::FontChange) {
        for (QLabel *line : {m_consequence, m_more}) {
            line->setMinimumHeight(heightOfLine(*line));
        }
    }
    return done;
}

void ConsequenceLine::say(const QString &consequence, const QString &more, bool isWarning) {
    if (consequence == m_consequence->text() && more == m_more->text()) {
        return;
    }
    QFont font = m_consequence->font();
    font.setBold(isWarning);
    m_consequence->setFont(font);
    m_consequence->setText(consequence);
    m_more->setText(more);
    m_sign->clear();
    if (!consequence.isEmpty()) {
        setLabelIcon(*m_sign, isWarning ? severityIcon(QStringLiteral("Moderate")) : m_calmSign,
                     m_sign->width());
    }
    setAccessibleName(more.isEmpty() ? consequence : consequence + u' ' + more);
    QAccessibleEvent event(this, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&event);
}

}  // namespace quorbel
