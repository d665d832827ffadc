#include "events/FindBar.h"

#include "common/Severity.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"
#include "platform/gui/QtText.h"

#include <QAction>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

#include <utility>

namespace quorbel {

namespace {

constexpr int kNarrow = 560;  // below it the bar folds
constexpr int kFieldWidth = 200;
constexpr int kHeight = 30;

QString ratingName(std::size_t rating) {
    return toQString(severityLevelName(static_cast<std::int64_t>(rating)));
}

}  // namespace

FindBar::FindBar(QWidget *parent)
    : QWidget(parent),
      m_unfold(new QToolButton(this)),
      m_row(new QWidget(this)),
      m_text(new QLineEdit(m_row)),
      m_warning(m_text->addAction(lineIcon(QStringLiteral("alert"), QColor(0xd9, 0x3a, 0x3f)),
                                  QLineEdit::TrailingPosition)),
      m_error(new QLabel(this)) {
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addWidget(m_unfold, 0, Qt::AlignLeft);
    column->addWidget(m_row);
    column->addWidget(m_error);
    m_unfold->setObjectName(QStringLiteral("findOpen"));
    m_unfold->setIcon(lineIcon(QStringLiteral("search")));
    m_unfold->setAutoRaise(true);
    m_unfold->setAccessibleName(tr("Find in events"));
    m_unfold->setToolTip(tr("Find in events (Ctrl+F)"));
    m_error->setObjectName(QStringLiteral("findError"));
    m_error->setTextFormat(Qt::PlainText);
    m_error->setStyleSheet(QStringLiteral("color: #b3262b"));
    m_error->hide();
    m_warning->setVisible(false);

    auto *row = new QHBoxLayout(m_row);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(4);
    m_text->setObjectName(QStringLiteral("findText"));
    m_text->setPlaceholderText(tr("Find in events"));
    m_text->setAccessibleName(tr("Find in events"));
    m_text->setMinimumWidth(sizedToFont(kFieldWidth));
    m_text->setMaximumWidth(sizedToFont(2 * kFieldWidth));
    m_text->setMinimumHeight(sizedToFont(kHeight));
    m_text->addAction(lineIcon(QStringLiteral("search")), QLineEdit::LeadingPosition);
    m_text->installEventFilter(this);
    row->addWidget(m_text, 1);
    m_case = addToggle("findCase", QStringLiteral("Aa"), tr("Match case"),
                       tr("Tell capital from small letters"));
    m_regex = addToggle("findRegex", QStringLiteral(".*"), tr("Regular expression"),
                        tr("Take the text as a regular expression"));
    addRatings();
    row->addStretch();
    m_clear = addToggle("findClear", tr("Clear"), tr("Clear the filter"), tr("Show all events"));
    m_clear->setCheckable(false);
    m_clear->hide();
    connect(m_unfold, &QAbstractButton::clicked, this, &FindBar::open);
    connect(m_text, &QLineEdit::textChanged, this, &FindBar::change);
    connect(m_clear, &QAbstractButton::clicked, this, [this] {
        clear();
        m_text->setFocus();
    });
    fold();
}

QToolButton *FindBar::addToggle(const char *name, const QString &text,
                                const QString &accessibleName, const QString &toolTip) {
    auto *button = new QToolButton(m_row);
    button->setObjectName(QString::fromLatin1(name));
    button->setText(text);
    button->setAccessibleName(accessibleName);
    button->setToolTip(toolTip);
    button->setCheckable(true);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::StrongFocus);
    button->setMinimumHeight(sizedToFont(kHeight));
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->installEventFilter(this);
    connect(button, &QAbstractButton::toggled, this, &FindBar::change);
    m_row->layout()->addWidget(button);
    return button;
}

void FindBar::addRatings() {
    for (std::size_t rating = m_ratings.size(); rating > 0; --rating) {
        const QString name = ratingName(rating - 1);
        QToolButton *button =
            addToggle("findRating", {}, name, tr("Show only the events rated %1").arg(name));
        button->setObjectName(QStringLiteral("findRating") + name);
        button->setIcon(severityIcon(name));
        m_ratings[rating - 1] = button;
    }
}

EventQuery FindBar::filter() const {
    EventQuery filter;
    if (!m_text->text().isEmpty()) {
        filter.texts.push_back(
            {{m_text->text().toStdString(), m_case->isChecked(), m_regex->isChecked()}, false});
    }
    for (std::size_t rating = 0; rating < m_ratings.size(); ++rating) {
        filter.ratings[rating + 1] = m_ratings[rating]->isChecked();
    }
    return filter;
}

void FindBar::open() {
    m_isUnfolded = true;
    fold();
    m_text->setFocus(Qt::ShortcutFocusReason);
    m_text->selectAll();
}

void FindBar::clear() {
    m_isClearing = true;
    m_text->clear();
    for (QToolButton *rating : m_ratings) {
        rating->setChecked(false);
    }
    m_isClearing = false;
    change();
}

void FindBar::change() {
    if (!m_isClearing) {
        m_clear->setVisible(filter().isInUse());
        Q_EMIT filterChanged();
    }
}

void FindBar::showError(const QString &error) {
    m_error->setText(error.isEmpty() ? QString()
                                     : tr("This is no regular expression: %1").arg(error));
    m_error->setVisible(!error.isEmpty());
    m_warning->setVisible(!error.isEmpty());
    m_warning->setToolTip(m_error->text());
    m_text->setAccessibleDescription(m_error->text());
    m_text->setStyleSheet(error.isEmpty() ? QString()
                                          : QStringLiteral("border: 1px solid #d93a3f"));
}

void FindBar::showCounts(const std::array<std::size_t, kRatingCount> &counts) {
    for (std::size_t rating = 0; rating < m_ratings.size(); ++rating) {
        const QString count = countText(static_cast<qlonglong>(counts[rating + 1]));
        m_ratings[rating]->setText(count);
        m_ratings[rating]->setAccessibleName(tr("%1, %2 events").arg(ratingName(rating), count));
    }
}

bool FindBar::isNarrow() const {
    return width() < sizedToFont(kNarrow);
}

void FindBar::fold() {
    const bool isFolded = isNarrow() && !m_isUnfolded && !filter().isInUse();
    m_row->setVisible(!isFolded);
    m_unfold->setVisible(isFolded);
}

void FindBar::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    fold();
}

bool FindBar::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() != QEvent::KeyPress) {
        return QWidget::eventFilter(watched, event);
    }
    const int key = static_cast<QKeyEvent *>(event)->key();
    if (key == Qt::Key_Escape && filter().isInUse()) {
        clear();
        m_text->setFocus();
        return true;
    }
    if (key == Qt::Key_Escape || (key == Qt::Key_Down && watched == m_text)) {
        m_isUnfolded = false;
        Q_EMIT left();
        fold();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace quorbel
