#include "events/FindBar.h"

#include "events/find/FindFacility.h"
#include "events/find/FindField.h"
#include "events/find/FindHost.h"
#include "events/find/FindMore.h"
#include "events/find/FindRatings.h"
#include "events/find/FindSpan.h"
#include "events/questions/FindSaved.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"
#include "platform/gui/KnownText.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScopedValueRollback>

#include <algorithm>

namespace quorbel {

namespace {

constexpr int kNarrow = 760;  // a page's width below which the choices fold
constexpr int kGap = 6;

}  // namespace

FindBar::FindBar(QWidget *parent)
    : QWidget(parent),
      m_row(new QWidget(this)),
      m_field(new FindField(m_row)),
      m_ratings(new FindRatings(m_row)),
      m_facility(new FindFacility(m_row)),
      m_host(new FindHost(m_row)),
      m_span(new FindSpan(m_row)),
      m_choices{new FindSeverity(m_row), m_facility, m_host, m_span},
      m_more(new FindMore(*m_ratings, m_row)),
      m_clear(new QPushButton(m_row)),
      m_saved(new FindSaved(m_row)),
      m_error(new QLabel(this)) {
    setAccessibleName(tr("Find events"));
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addWidget(m_row);
    column->addWidget(m_error);
    m_error->setObjectName(QStringLiteral("findError"));
    m_error->setProperty("role", QStringLiteral("error"));
    m_error->setTextFormat(Qt::PlainText);
    m_error->setWordWrap(true);
    m_error->hide();
    makeRow();
    connect(m_field, &FindField::changed, this, &FindBar::change);
    connect(m_ratings, &FindRatings::changed, this, &FindBar::change);
    for (const FindChoice *choice : std::as_const(m_choices)) {
        connect(choice, &FindChoice::changed, this, &FindBar::change);
    }
    connect(m_saved, &FindChoice::changed, this, &FindBar::change);
    connect(m_span, &FindSpan::timePassed, this, &FindBar::follow);
    connect(m_clear, &QAbstractButton::clicked, this, [this] {
        clear();
        m_field->open();
    });
    fit();
}

void FindBar::makeRow() {
    // It fits itself to the width that there is.
    m_row->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    auto *row = new QHBoxLayout(m_row);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(kGap);
    row->addWidget(m_field, 1000);
    row->addWidget(m_ratings);
    for (FindChoice *choice : std::as_const(m_choices)) {
        row->addWidget(choice);
    }
    row->addWidget(m_more);
    row->addWidget(m_clear);
    row->addStretch(1);
    row->addWidget(m_saved);
    m_clear->setObjectName(QStringLiteral("findClear"));
    m_clear->setProperty("role", QStringLiteral("link"));
    m_clear->setAutoDefault(false);
    m_clear->setCursor(Qt::PointingHandCursor);
    m_clear->setAccessibleName(tr("Clear the filter"));
    m_clear->setToolTip(tr("Show all events again (Ctrl+Shift+L)"));
}

void FindBar::attach(EventList &events, QAbstractButton &unfold) {
    m_facility->attach(events);
    m_host->attach(events);
    m_unfold = &unfold;
    connect(m_unfold, &QAbstractButton::clicked, this, &FindBar::open);
    parentWidget()->installEventFilter(this);
    fold();
}

EventQuery FindBar::filter() const {
    return queryAt(lastingFilter(), now());
}

QDateTime FindBar::now() const {
    return m_span->now();
}

EventQuery FindBar::lastingFilter() const {
    EventQuery query = ownFilter();
    m_saved->addTo(query);
    return query;
}

EventQuery FindBar::ownFilter() const {
    EventQuery query;
    query.texts = m_field->texts();
    m_ratings->addTo(query);
    for (const FindChoice *choice : m_choices) {
        choice->addTo(query);
    }
    return query;
}

std::vector<FindBar::Condition> FindBar::conditions() const {
    std::vector<Condition> conditions;
    const EventQuery all = ownFilter();
    const QStringList names = m_field->names();
    for (std::size_t i = 0; i < all.texts.size(); ++i) {
        EventQuery others = all;
        others.texts.erase(others.texts.begin() + static_cast<std::ptrdiff_t>(i));
        conditions.push_back({names.value(static_cast<qsizetype>(i)), std::move(others),
                              [this, i] { m_field->remove(i); }});
    }
    if (all.ratings.any()) {
        EventQuery others = all;
        others.ratings.reset();
        conditions.push_back(
            {tr("the ratings"), std::move(others), [this] { m_ratings->clear(); }});
    }
    for (FindChoice *choice : m_choices) {
        if (choice->isInUse()) {
            EventQuery others = all;
            choice->removeFrom(others);
            conditions.push_back(
                {choice->value(), std::move(others), [choice] { choice->clear(); }});
        }
    }
    for (Condition &condition : conditions) {
        m_saved->addTo(condition.others);
    }
    if (m_saved->isInUse()) {
        conditions.push_back({m_saved->value(), all, [this] { m_saved->clear(); }});
    }
    for (Condition &condition : conditions) {
        condition.others = queryAt(condition.others, now());
    }
    return conditions;
}

void FindBar::open() {
    m_isUnfolded = true;
    fold();
    m_field->open();
}

void FindBar::clear() {
    {
        const QScopedValueRollback clearing(m_isClearing, true);
        clearControls();
    }
    change();
}

void FindBar::clearControls() {
    m_field->clear();
    m_ratings->clear();
    for (FindChoice *choice : std::as_const(m_choices)) {
        choice->clear();
    }
    m_saved->clear();
}

void FindBar::setFilter(const EventQuery &query) {
    {
        const QScopedValueRollback clearing(m_isClearing, true);
        clearControls();
        for (const TextCondition &text : query.texts) {
            m_field->add(text);
        }
        m_ratings->takeFrom(query);
        for (FindChoice *choice : std::as_const(m_choices)) {
            choice->takeFrom(query);
        }
        if (ownFilter() != query) {
            clearControls();
            m_saved->takeFrom(query);
        }
    }
    change();
}

void FindBar::openSaved() {
    m_isUnfolded = true;
    fold();
    m_saved->openBelow(*m_saved);
}

void FindBar::addText(const TextCondition &condition) {
    m_field->add(condition);
}

void FindBar::onlyHost(const QString &host) {
    m_host->only(host);
}

void FindBar::excludeHost(const QString &host) {
    m_host->exclude(host);
}

void FindBar::setSpan(std::optional<std::int64_t> from, std::optional<std::int64_t> until) {
    m_span->choose({from, until});
}

EventSpan::Moments FindBar::span() const {
    const EventQuery query = queryAt(ownFilter(), now());
    return {query.from, query.until};
}

void FindBar::change() {
    if (!m_isClearing) {
        fold();
        fit();
        m_told = filter();
        Q_EMIT filterChanged();
    }
}

/// A kept filter's span goes on too.
void FindBar::follow() {
    if (filter() != m_told) {
        change();
    }
    Q_EMIT timePassed();
}

void FindBar::showError(const QString &error) {
    const QString text = error.isEmpty() ? QString()
                         : m_field->isExpression()
                             ? tr("This is no regular expression: %1").arg(knownProblem(error))
                             : tr("This text is too long to be looked for");
    m_error->setText(text);
    m_error->setVisible(!error.isEmpty());
    m_field->showError(text);
}

void FindBar::showCounts(const std::array<std::size_t, kRatingCount> &counts) {
    m_ratings->showCounts(counts);
    fit();
}

bool FindBar::isNarrow() const {
    return parentWidget() != nullptr && parentWidget()->width() < sizedToFont(kNarrow);
}

void FindBar::fold() {
    if (m_unfold == nullptr) {
        return;
    }
    const bool isFolded = isNarrow() && !m_isUnfolded && !filter().isInUse();
    setVisible(!isFolded);
    m_unfold->setVisible(isFolded);
}

void FindBar::fit() {
    m_clear->setVisible(filter().isInUse());
    m_clear->setText(isNarrow() ? QString() : tr("Clear"));
    m_clear->setIcon(isNarrow() ? lineIcon(QStringLiteral("cancel")) : QIcon());
    m_field->setCompact(false);
    m_field->setUnlimited(isNarrow());
    m_saved->setCompact(isNarrow());
    m_ratings->setVisible(!isNarrow());
    for (FindChoice *choice : std::as_const(m_choices)) {
        choice->setVisible(!isNarrow());
    }
    if (isNarrow()) {
        m_more->standForAll(m_choices);
        m_field->setCompact(!fits());
    } else {
        fitWide();
    }
}

/// What gives way, in turn.
void FindBar::fitWide() {
    QList<FindChoice *> withoutRoom;
    m_more->standFor({});
    m_saved->setCompact(!fits());
    for (auto choice = m_choices.crbegin(); choice != m_choices.crend() && !fits(); ++choice) {
        if (!(*choice)->isInUse()) {
            (*choice)->hide();
            withoutRoom.prepend(*choice);
            m_more->standFor(withoutRoom);
        }
    }
    if (!fits()) {
        m_clear->setText({});
        m_clear->setIcon(lineIcon(QStringLiteral("cancel")));
    }
    m_field->setCompact(!fits());
}

bool FindBar::fits() const {
    int needed = m_field->wantedWidth();
    for (const QWidget *control :
         m_row->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
        if (control != m_field && !control->isHidden()) {
            needed += control->sizeHint().width() + kGap;
        }
    }
    return needed <= width();
}

void FindBar::leave() {
    m_isUnfolded = false;
    Q_EMIT left();
    fold();
}

void FindBar::keyPressEvent(QKeyEvent *event) {
    const bool isInField = m_field->isAncestorOf(QApplication::focusWidget());
    if (event->key() == Qt::Key_Escape) {
        if (!isInField || !m_field->clearTyped()) {
            leave();
        }
    } else if (event->key() == Qt::Key_Down && isInField) {
        leave();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void FindBar::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    fit();
}

bool FindBar::eventFilter(QObject *watched, QEvent *event) {
    if (watched == parentWidget() && event->type() == QEvent::Resize) {
        fold();
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace quorbel
