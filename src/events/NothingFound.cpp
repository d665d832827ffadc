#include "events/NothingFound.h"

#include "events/FindBar.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/QtText.h"

#include <QElapsedTimer>
#include <QEvent>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

namespace quorbel {

namespace {

constexpr int kSliceMilliseconds = 8;
constexpr int kBelowMiddle = 16;  // where the table's own hint stands
constexpr int kWidestName = 140;

QPushButton *linkButton(const char *name, QWidget *parent) {
    auto *button = new QPushButton(parent);
    button->setObjectName(QString::fromLatin1(name));
    button->setProperty("role", QStringLiteral("link"));
    button->setAutoDefault(false);
    button->setCursor(Qt::PointingHandCursor);
    return button;
}

}  // namespace

NothingFound::NothingFound(EventList &list, FindBar &bar, QTableView &table)
    : QWidget(&table),
      m_list(list),
      m_bar(bar),
      m_table(table),
      m_without(linkButton("findWithout", this)) {
    setObjectName(QStringLiteral("nothingFound"));
    setAccessibleName(tr("No events match."));
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    QPushButton *clear = linkButton("findNothingClear", this);
    clear->setText(tr("Clear"));
    clear->setAccessibleName(tr("Clear the filter"));
    clear->setToolTip(tr("Show all events again (Ctrl+Shift+L)"));
    column->addWidget(clear, 0, Qt::AlignHCenter);
    column->addWidget(m_without, 0, Qt::AlignHCenter);
    m_without->setAccessibleName(tr("Without the costliest condition"));
    hide();
    setTabOrder(&table, clear);
    setTabOrder(clear, m_without);
    connect(clear, &QAbstractButton::clicked, &m_bar, &FindBar::clear);
    connect(m_without, &QAbstractButton::clicked, this, &NothingFound::removeCostliest);
    connect(&m_slices, &QTimer::timeout, this, &NothingFound::search);
    table.installEventFilter(this);
}

NothingFound::~NothingFound() = default;

void NothingFound::appear() {
    m_others.clear();
    for (const FindBar::Condition &condition : m_bar.conditions()) {
        m_others.push_back(condition.others);
    }
    m_next = 0;
    m_costliest.reset();
    m_trial.reset();
    m_without->hide();
    show();
    raise();
    place();
    if (m_others.size() > 1) {  // else it is all events
        m_slices.start(0);
    }
}

void NothingFound::disappear() {
    m_slices.stop();
    m_trial.reset();
    hide();
}

void NothingFound::tryNext() {
    m_trial = std::make_unique<ArrangedEvents>(m_list);
    if (!m_trial->setFilter(m_others[m_next++]).empty()) {
        m_trial.reset();  // its expression is wrong still
    }
}

void NothingFound::search() {
    QElapsedTimer time;
    time.start();
    if (m_trial == nullptr) {
        if (m_next == m_others.size()) {
            m_slices.stop();
            showCostliest();
        } else {
            tryNext();
        }
        return;
    }
    m_trial->search([&time] { return time.elapsed() >= kSliceMilliseconds; });
    if (!m_trial->isSearching()) {
        const std::size_t matches = m_trial->size();
        if (matches > (m_costliest ? m_costliest->matches : 0)) {
            m_costliest = Costliest{m_next - 1, matches};
        }
        m_trial.reset();
    }
}

void NothingFound::showCostliest() {
    const std::vector<FindBar::Condition> conditions = m_bar.conditions();
    if (!m_costliest || m_costliest->condition >= conditions.size()) {
        return;
    }
    const QString &name = conditions[m_costliest->condition].name;
    const auto matches = static_cast<qint64>(m_costliest->matches);
    const QString count = countText(matches);
    QString shown = fontMetrics().elidedText(name, Qt::ElideRight, sizedToFont(kWidestName));
    m_without->setText(tr("Without %1: %2").arg(shown.replace(u'&', QStringLiteral("&&")), count));
    m_without->setAccessibleName(tr("Without %1: %2").arg(name, count));
    m_without->setToolTip(
        QStringLiteral("<p>%1</p>")
            .arg(tr("Remove the condition %1: then %2 events match", nullptr, pluralNumber(matches))
                     .arg(name, count)
                     .toHtmlEscaped()));
    m_without->show();
    place();
}

void NothingFound::removeCostliest() {
    const std::vector<FindBar::Condition> conditions = m_bar.conditions();
    if (m_costliest && m_costliest->condition < conditions.size()) {
        conditions[m_costliest->condition].remove();
    }
}

void NothingFound::place() {
    adjustSize();
    const QRect viewport = m_table.viewport()->geometry();
    move(viewport.center().x() - width() / 2, viewport.center().y() + sizedToFont(kBelowMiddle));
}

bool NothingFound::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::Resize && isVisible()) {
        QMetaObject::invokeMethod(this, &NothingFound::place, Qt::QueuedConnection);
    }
    return QWidget::eventFilter(watched, event);
}

}  // namespace quorbel
