#include "events/questions/QuestionFooter.h"

#include "events/find/QueryText.h"
#include "events/questions/FilterLibrary.h"
#include "events/questions/MarkColours.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"
#include "platform/gui/LetteredMenu.h"
#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"

#include <QActionGroup>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPushButton>

#include <algorithm>

namespace quorbel {

namespace {

constexpr int kSign = 16;
constexpr int kAboutLines = 2;
constexpr qsizetype kLongestAbout = 160;
constexpr qsizetype kLongestName = 60;

QIcon colourIcon(MarkColour colour) {
    const int size = sizedToFont(kSign);
    QPixmap picture(size, size);
    picture.fill(QColor::fromRgb(lookOf(colour).tint));
    QPainter(&picture).fillRect(0, 0, size / 3, size, QColor::fromRgb(lookOf(colour).line));
    return picture;
}

QString shortened(const QString &text, qsizetype longest) {
    return text.size() > longest ? text.left(longest - 1) + QStringLiteral("…") : text;
}

void openAbove(QMenu &menu, const QWidget &button) {
    menu.popup(button.mapToGlobal(QPoint(0, -menu.sizeHint().height() - 2)));
}

}  // namespace

QuestionFooter::QuestionFooter(QWidget *parent)
    : QWidget(parent),
      m_name(new QLabel(this)),
      m_about(new QLabel(this)),
      m_buttons(new QWidget(this)) {
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(15, 10, 15, 14);
    column->setSpacing(4);
    column->addWidget(m_name);
    column->addWidget(m_about);
    column->addSpacing(6);
    column->addWidget(m_buttons);
    m_name->setObjectName(QStringLiteral("findSavedTitle"));
    m_name->setTextFormat(Qt::PlainText);
    m_name->setStyleSheet(QStringLiteral("font-weight: 600"));
    m_about->setObjectName(QStringLiteral("findSavedAbout"));
    m_about->setTextFormat(Qt::PlainText);
    m_about->setProperty("role", QStringLiteral("caption"));
    m_about->setWordWrap(true);
    m_about->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_about->setFixedHeight(kAboutLines * m_about->fontMetrics().lineSpacing() + 4);
    auto *row = new QHBoxLayout(m_buttons);
    row->setContentsMargins(0, 0, 0, 0);
    m_keep = addButton("findSavedKeep", tr("Keep this filter..."), "link");
    m_more = addButton("findSavedMore", QStringLiteral("···"), "rating");
    row->addStretch();
    m_mark = addButton("findSavedMark", tr("Mark in colour"), "");
    m_showOnly = addButton("findSavedShow", tr("Show only these"), "primary");
    m_more->setAccessibleName(tr("More about kept filters"));
    m_mark->setIcon(lineIcon(QStringLiteral("down")));
    m_mark->setLayoutDirection(Qt::RightToLeft);  // the arrow behind the text
    m_mark->setToolTip(tr("Mark the events among the others (Ctrl+Return)"));
    connect(m_keep, &QAbstractButton::clicked, this, &QuestionFooter::keepAsked);
    connect(m_more, &QAbstractButton::clicked, this, &QuestionFooter::openMoreMenu);
    connect(m_mark, &QAbstractButton::clicked, this, &QuestionFooter::openMarkMenu);
    connect(m_showOnly, &QAbstractButton::clicked, this, &QuestionFooter::showOnlyAsked);
}

QPushButton *QuestionFooter::addButton(const char *name, const QString &text, const char *role) {
    auto *button = new QPushButton(text, m_buttons);
    button->setObjectName(QString::fromLatin1(name));
    button->setProperty("role", QString::fromLatin1(role));
    button->setAutoDefault(false);
    m_buttons->layout()->addWidget(button);
    return button;
}

void QuestionFooter::show(const SavedFilter *filter, const State &state) {
    m_state = state;
    const QString name = filter == nullptr ? QString() : paintedRow(FilterLibrary::nameOf(*filter));
    const QString about = filter == nullptr       ? QString()
                          : filter->about.empty() ? queryText(filter->query)
                                                  : paintedRow(FilterLibrary::aboutOf(*filter));
    m_name->setText(shortened(name, kLongestName));
    m_about->setText(shortened(about, kLongestAbout));
    m_about->setToolTip(QStringLiteral("<p>%1</p>").arg(about.toHtmlEscaped()));
    m_mark->setEnabled(filter != nullptr);
    m_showOnly->setEnabled(filter != nullptr);
    m_showOnly->setText(state.isInForce ? tr("Show all again") : tr("Show only these"));
    m_keep->setEnabled(state.hasFilter && state.whyNotKept.isEmpty());
    m_keep->setToolTip(state.whyNotKept.isEmpty()
                           ? tr("Keep what the page is filtered by under a name")
                           : state.whyNotKept);
}

void QuestionFooter::openMarkMenu() {
    auto *menu = new LetteredMenu(m_mark);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setObjectName(QStringLiteral("findSavedColours"));
    menu->setLayoutDirection(layoutDirection());  // not the button's
    auto *group = new QActionGroup(menu);
    const auto add = [&](const QString &text, std::optional<MarkColour> colour) {
        QAction *action = menu->addAction(text);
        action->setCheckable(true);
        action->setChecked(m_state.mark == colour);
        group->addAction(action);
        connect(action, &QAction::triggered, this, [this, colour] { Q_EMIT markAsked(colour); });
        return action;
    };
    for (std::size_t i = 0; i < kMarkLooks.size(); ++i) {
        const auto colour = static_cast<MarkColour>(i);
        add(QCoreApplication::translate("MarkColours", lookOf(colour).label), colour)
            ->setIcon(colourIcon(colour));
    }
    menu->addSeparator();
    add(tr("No colour"), std::nullopt);
    openAbove(*menu, *m_mark);
}

void QuestionFooter::openMoreMenu() {
    auto *menu = new LetteredMenu(m_more);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setObjectName(QStringLiteral("findSavedMenu"));
    const auto add = [&](const char *name, const QString &text, void (QuestionFooter::*what)(),
                         bool isPossible) {
        QAction *action = menu->addAction(text, this, what);
        action->setObjectName(QString::fromLatin1(name));
        action->setEnabled(isPossible);
    };
    add("renameFilter", tr("Rename..."), &QuestionFooter::renameAsked, m_state.isKept);
    add("deleteFilter", tr("Delete..."), &QuestionFooter::deleteAsked, m_state.isKept);
    menu->addSeparator();
    add("importFilters", tr("Import from a file..."), &QuestionFooter::importAsked, true);
    add("exportFilters", tr("Export the kept filters..."), &QuestionFooter::exportAsked,
        m_state.hasKept);
    openAbove(*menu, *m_more);
}

}  // namespace quorbel
