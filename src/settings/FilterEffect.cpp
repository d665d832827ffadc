#include "settings/FilterEffect.h"

#include "platform/gui/Icons.h"
#include "platform/gui/QtText.h"
#include "settings/ConsequenceLine.h"
#include "settings/FilterForm.h"
#include "settings/Recount.h"

#include <QDateTime>
#include <QVBoxLayout>

namespace quorbel {

namespace {

std::int64_t beginOfToday() {
    return QDate::currentDate().startOfDay().toSecsSinceEpoch();
}

QString count(std::size_t events) {
    return countText(static_cast<qint64>(events));
}

}  // namespace

FilterEffect::FilterEffect(QWidget *parent) : QWidget(parent), m_line(new ConsequenceLine(this)) {
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_line);
    m_line->setCalmSign(lineIcon(QStringLiteral("filter")));
}

FilterEffect::~FilterEffect() = default;

void FilterEffect::follow(const FilterForm &form, EventList &events, Kind kind) {
    m_form = &form;
    m_kind = kind;
    m_count = std::make_unique<FilterCount>(events);
    m_recount = std::make_unique<Recount>(*m_count, *this);
    connect(m_recount.get(), &Recount::due, this, &FilterEffect::start);
    connect(m_recount.get(), &Recount::counted, this, &FilterEffect::show);
    connect(m_recount.get(), &Recount::slow, this, [this] { m_line->say(tr("Counting…")); });
    connect(&form, &FilterForm::edited, m_recount.get(), &Recount::edited);
    m_recount->begin();
}

void FilterEffect::start() {
    m_count->start(m_form->allFields(), beginOfToday());
}

bool FilterEffect::isAll() const {
    return m_count->listed() > 1 && m_count->counts().meant == m_count->listed();
}

QString FilterEffect::consequence() const {
    const QString text = isAll() ? ofAll() : ofSome().arg(count(m_count->counts().meant));
    return text.arg(count(m_count->listed()));
}

QString FilterEffect::ofAll() const {
    switch (m_kind) {
        case Kind::kLeavesOut:
            return tr("It would have left out all %1 listed events.");
        case Kind::kAccepts:
            return tr("It would have accepted all %1 listed events.");
        default:
            return tr("It would have matched all %1 listed events.");
    }
}

QString FilterEffect::ofSome() const {
    switch (m_kind) {
        case Kind::kLeavesOut:
            return tr("It would have left out %1 of %2 listed events.");
        case Kind::kAccepts:
            return tr("It would have accepted %1 of %2 listed events.");
        default:
            return tr("It would have matched %1 of %2 listed events.");
    }
}

QString FilterEffect::more() const {
    if (m_kind == Kind::kLeavesOut && m_count->meansEverything()) {
        return tr("Nothing would arrive any more.");
    }
    const FilterCount::Counts &counts = m_count->counts();
    QStringList texts;
    if (counts.meant > 0) {
        texts << tr("Today: %1.").arg(count(counts.meantToday));
    }
    if (counts.unknown > 0) {
        texts << tr("Perhaps, as only the host's name is known: %1.").arg(count(counts.unknown));
    }
    return texts.join(u' ');
}

void FilterEffect::show() {
    if (m_count->listed() == 0) {
        m_line->say(tr("No events are listed yet."), more());
        return;
    }
    const bool isWide = m_kind != Kind::kAccepts && isAll();
    m_line->say(consequence(), more(), isWide);
}

}  // namespace quorbel
