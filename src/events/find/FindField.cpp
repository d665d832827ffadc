#include "events/find/FindField.h"

#include "events/find/FindChip.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/Icons.h"
#include "platform/gui/LetteredMenu.h"
#include "platform/gui/LookProperty.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSignalBlocker>

#include <algorithm>

namespace quorbel {

namespace {

constexpr int kLeast = 200;
constexpr int kRoomToType = 110;
constexpr int kMost = 400;
constexpr int kIcon = 16;
constexpr int kHeight = 30;
constexpr int kFirstChip = 1;  // in the row, behind the magnifier
const QColor kWrong(0xd9, 0x3a, 0x3f);

}  // namespace

FindField::FindField(QWidget *parent)
    : QFrame(parent),
      m_row(new QHBoxLayout(this)),
      m_number(new QPushButton(this)),
      m_text(new QLineEdit(this)),
      m_warning(new QLabel(this)) {
    setObjectName(QStringLiteral("findField"));
    setProperty("role", QStringLiteral("find"));
    setFixedHeight(sizedToFont(kHeight));
    m_row->setContentsMargins(9, 0, 4, 0);
    m_row->setSpacing(4);
    auto *magnifier = new QLabel(this);
    setLabelIcon(*magnifier, lineIcon(QStringLiteral("search")), sizedToFont(kIcon));
    m_row->addWidget(magnifier);
    m_row->addWidget(m_number);
    m_row->addWidget(m_text, 1);
    m_row->addWidget(m_warning);
    m_text->setObjectName(QStringLiteral("findText"));
    m_text->setProperty("role", QStringLiteral("bare"));
    m_text->setPlaceholderText(tr("Find in events"));
    m_text->setAccessibleName(tr("Find in events"));
    m_text->setToolTip(tr("Show only events that contain a text (Ctrl+F); Return adds another"));
    m_text->installEventFilter(this);
    m_number->setObjectName(QStringLiteral("findConditions"));
    m_number->setProperty("role", QStringLiteral("number"));
    m_number->setAutoDefault(false);
    connect(m_number, &QAbstractButton::clicked, this, &FindField::openMenu);
    setLabelIcon(*m_warning, lineIcon(QStringLiteral("alert"), kWrong), sizedToFont(kIcon));
    m_case = makeToggle("findCase", QStringLiteral("Aa"), tr("Match case"),
                        tr("Tell capital from small letters"));
    m_regex = makeToggle("findRegex", QStringLiteral(".*"), tr("Regular expression"),
                         tr("Take the text as a regular expression"));
    connect(m_text, &QLineEdit::textChanged, this, &FindField::changed);
    connect(m_text, &QLineEdit::returnPressed, this, &FindField::keepTyped);
    arrange();
}

QPushButton *FindField::makeToggle(const char *name, const QString &text,
                                   const QString &accessibleName, const QString &toolTip) {
    auto *button = new QPushButton(this);
    button->setObjectName(QString::fromLatin1(name));
    button->setProperty("role", QStringLiteral("option"));
    button->setText(text);
    button->setAccessibleName(accessibleName);
    button->setToolTip(toolTip);
    button->setCheckable(true);
    button->setAutoDefault(false);
    connect(button, &QAbstractButton::toggled, this, [this] {
        if (!m_text->text().isEmpty()) {
            Q_EMIT changed();
        }
    });
    m_row->addWidget(button);
    return button;
}

TextCondition FindField::typed() const {
    return {{m_text->text().toStdString(), m_case->isChecked(), m_regex->isChecked()}, false};
}

std::vector<TextCondition> FindField::texts() const {
    std::vector<TextCondition> texts;
    for (const FindChip *chip : m_chips) {
        texts.push_back(chip->condition());
    }
    if (!m_text->text().isEmpty()) {
        texts.push_back(typed());
    }
    return texts;
}

QStringList FindField::names() const {
    QStringList names;
    for (const FindChip *chip : m_chips) {
        names.append(chip->name());
    }
    if (!m_text->text().isEmpty()) {
        names.append(FindChip(typed(), nullptr).name());
    }
    return names;
}

void FindField::remove(std::size_t text) {
    if (text < static_cast<std::size_t>(m_chips.size())) {
        removeChip(m_chips[static_cast<qsizetype>(text)]);
    } else {
        m_text->clear();
    }
}

void FindField::add(const TextCondition &condition) {
    insertChip(condition);
    Q_EMIT changed();
}

void FindField::keepTyped() {
    if (m_text->text().isEmpty() || !m_error.isEmpty()) {
        return;
    }
    const TextCondition condition = typed();
    {
        const QSignalBlocker blocker(m_text);  // the same is asked for still
        m_text->clear();
    }
    add(condition);
}

void FindField::insertChip(const TextCondition &condition) {
    if (std::ranges::any_of(m_chips,
                            [&](const FindChip *chip) { return chip->condition() == condition; })) {
        return;
    }
    auto *chip = new FindChip(condition, this);
    connect(chip, &FindChip::turned, this, [this] {
        arrange();
        Q_EMIT changed();
    });
    connect(chip, &FindChip::removed, this, [this, chip] {
        removeChip(chip);
        m_text->setFocus();
    });
    setTabOrder(m_chips.isEmpty() ? static_cast<QWidget *>(m_number) : m_chips.last(), chip);
    setTabOrder(chip, m_text);
    m_chips.append(chip);
    m_row->insertWidget(kFirstChip + static_cast<int>(m_chips.size()), chip);
    arrange();
}

void FindField::dropChip(FindChip *chip) {
    m_chips.removeOne(chip);
    m_row->removeWidget(chip);
    chip->hide();
    chip->deleteLater();
}

void FindField::removeChip(FindChip *chip) {
    dropChip(chip);
    arrange();
    Q_EMIT changed();
}

void FindField::clear() {
    while (!m_chips.isEmpty()) {
        dropChip(m_chips.last());
    }
    {
        const QSignalBlocker blocker(m_text);
        m_text->clear();
    }
    arrange();
    Q_EMIT changed();
}

bool FindField::clearTyped() {
    const bool isSomething = !m_text->text().isEmpty();
    m_text->clear();
    return isSomething;
}

void FindField::open() {
    m_text->setFocus(Qt::ShortcutFocusReason);
    m_text->selectAll();
}

void FindField::showError(const QString &error) {
    m_error = error;
    m_warning->setToolTip(error);
    m_text->setAccessibleDescription(error);
    showState();
}

void FindField::setCompact(bool isCompact) {
    m_isCompact = isCompact;
    arrange();
}

void FindField::setUnlimited(bool isUnlimited) {
    m_isUnlimited = isUnlimited;
    arrange();
}

void FindField::arrange() {
    for (FindChip *chip : std::as_const(m_chips)) {
        chip->setVisible(!m_isCompact);
    }
    m_number->setVisible(m_isCompact && !m_chips.isEmpty());
    m_number->setText(QStringLiteral("+%1").arg(m_chips.size()));
    QStringList lines;
    for (const FindChip *chip : std::as_const(m_chips)) {
        lines.append(chip->description().toHtmlEscaped());
    }
    m_number->setToolTip(QStringLiteral("<p>%1</p>").arg(lines.join(QStringLiteral("<br>"))));
    m_number->setAccessibleName(tr("Conditions: %1").arg(m_chips.size()));
    m_text->setPlaceholderText(m_chips.isEmpty() ? tr("Find in events") : tr("and ..."));
    setMaximumWidth(m_isUnlimited ? QWIDGETSIZE_MAX : std::max(sizedToFont(kMost), wantedWidth()));
    showState();
}

void FindField::openMenu() {
    auto *menu = new LetteredMenu(m_number);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setAccessibleName(tr("Conditions"));
    for (FindChip *chip : std::as_const(m_chips)) {
        QString title = fontMetrics().elidedText(chip->name(), Qt::ElideRight, sizedToFont(kLeast));
        auto *one = new LetteredMenu(title.replace(u'&', QStringLiteral("&&")), menu);
        menu->addMenu(one);
        one->addAction(chip->condition().isNegated ? tr("&Contains") : tr("Does Not &Contain"),
                       chip, &FindChip::turn);
        one->addAction(tr("&Remove"), chip, &FindChip::removed);
    }
    menu->popup(m_number->mapToGlobal(QPoint(0, m_number->height() + 2)));
}

void FindField::showState() {
    m_warning->setVisible(!m_error.isEmpty());
    const QString state = !m_error.isEmpty()   ? QStringLiteral("wrong")
                          : m_text->hasFocus() ? QStringLiteral("focus")
                                               : QString();
    setLookProperty(*this, "state", state);
}

int FindField::wantedWidth() const {
    int width = sizedToFont(kIcon + kRoomToType) + m_case->sizeHint().width() +
                m_regex->sizeHint().width() + 4 * m_row->spacing() +
                m_row->contentsMargins().left() + m_row->contentsMargins().right();
    for (const FindChip *chip : m_chips) {
        width += m_isCompact ? 0 : chip->sizeHint().width() + m_row->spacing();
    }
    return std::max(width, sizedToFont(kLeast));
}

QSize FindField::minimumSizeHint() const {
    return {m_isCompact ? sizedToFont(kLeast) : wantedWidth(), sizedToFont(kHeight)};
}

bool FindField::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) {
        QMetaObject::invokeMethod(this, &FindField::showState, Qt::QueuedConnection);
    } else if (event->type() == QEvent::KeyPress && m_text->text().isEmpty() &&
               !m_chips.isEmpty()) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Backspace || key == Qt::Key_Left) {
            QWidget *before = m_isCompact ? static_cast<QWidget *>(m_number) : m_chips.last();
            before->setFocus(Qt::BacktabFocusReason);
            return true;
        }
    }
    return QFrame::eventFilter(watched, event);
}

}  // namespace quorbel
