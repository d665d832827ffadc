#include "events/find/FindHost.h"

#include "core/EventReader.h"
#include "core/HostPattern.h"
#include "events/find/FindPanel.h"
#include "platform/gui/FontSize.h"
#include "platform/gui/LookProperty.h"
#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace quorbel {

namespace {

constexpr int kMostOffered = 100;
constexpr int kWidth = 280;
constexpr int kListHeight = 210;

QString patternFor(const QString &host) {
    return toQString(HostPattern::meaning(host.toStdString()));
}

/// What the hosts that are offered have to match.
HostPattern offeredFor(const std::string &typed) {
    const bool isWhole = typed.find_first_of("!\"") == 0 || typed.find('/') != std::string::npos;
    return HostPattern(isWhole ? typed : "*" + typed + "*");
}

QLabel *hintLabel(QWidget *parent) {
    auto *hint = new QLabel(
        FindHost::tr("* is any text, ? one character; 10.0.0.0/8 a network; \"a*\" that name; ! "
                     "excludes; commas separate several"),
        parent);
    hint->setProperty("role", QStringLiteral("caption"));
    hint->setWordWrap(true);
    return hint;
}

}  // namespace

FindHost::FindHost(QWidget *parent)
    : FindChoice("findHost", tr("Host"), tr("Show only events of certain hosts"), parent),
      m_panel(new FindPanel(this)),
      m_text(new QLineEdit(m_panel)),
      m_error(new QLabel(m_panel)),
      m_list(new QListWidget(m_panel)) {
    m_panel->setObjectName(QStringLiteral("findHostPanel"));
    m_panel->setFixedWidth(sizedToFont(kWidth));
    auto *column = new QVBoxLayout(m_panel);
    column->addWidget(m_text);
    column->addWidget(m_error);
    column->addWidget(hintLabel(m_panel));
    column->addWidget(m_list);
    m_text->setObjectName(QStringLiteral("findHostText"));
    m_text->setAccessibleName(tr("Host"));
    m_text->setPlaceholderText(tr("Any host"));
    m_error->setObjectName(QStringLiteral("findHostError"));
    m_error->setProperty("role", QStringLiteral("error"));
    m_error->setTextFormat(Qt::PlainText);
    m_error->setWordWrap(true);
    m_error->hide();
    m_list->setObjectName(QStringLiteral("findHostList"));
    m_list->setAccessibleName(tr("Hosts of the listed events"));
    m_list->setSpacing(2);
    m_list->setFixedHeight(sizedToFont(kListHeight));
    m_text->installEventFilter(this);
    m_list->installEventFilter(this);
    connect(m_text, &QLineEdit::textEdited, this, &FindHost::offer);
    connect(m_text, &QLineEdit::textEdited, this, [this] { showError({}); });
    connect(m_text, &QLineEdit::returnPressed, this, &FindHost::takeTyped);
    connect(m_list, &QListWidget::itemClicked, this, &FindHost::takeItem);
}

void FindHost::openBelow(QWidget &anchor) {
    m_text->setText(value());
    m_text->selectAll();
    showError({});
    offer();
    m_panel->openBelow(anchor);
    m_text->setFocus();
}

/// In their alphabet.
QStringList FindHost::hosts() const {
    QStringList hosts;
    const std::string typed = m_text->isModified() ? m_text->text().trimmed().toStdString() : "";
    const HostPattern wanted = offeredFor(typed);
    if (m_events != nullptr) {
        EventReader(*m_events).visitHosts([&](std::string_view host) {
            if (!host.empty() && wanted.matches(host)) {
                hosts.append(toQString(host));
            }
        });
    }
    std::ranges::sort(hosts);
    return hosts;
}

void FindHost::offer() {
    m_list->clear();
    for (const QString &host : hosts()) {
        if (m_list->count() == kMostOffered) {
            break;
        }
        m_list->addItem(paintedRow(host));
        m_list->item(m_list->count() - 1)->setData(Qt::UserRole, host);
    }
}

void FindHost::takeTyped() {
    if (const auto wrong = HostPattern::wrongNetworkIn(m_text->text().toStdString())) {
        showError(tr("This is no network: %1").arg(paintedRow(toQString(*wrong))));
    } else {
        take(m_text->text());
    }
}

void FindHost::showError(const QString &error) {
    m_error->setText(error);
    m_error->setVisible(!error.isEmpty());
    m_text->setAccessibleDescription(error);
    setLookProperty(*m_text, "state", error.isEmpty() ? QString() : QStringLiteral("wrong"));
    m_panel->adjustSize();
}

void FindHost::take(const QString &pattern) {
    m_panel->hide();
    showValue(HostPattern(pattern.toStdString()).isAny() ? QString() : pattern.trimmed());
}

void FindHost::takeFrom(const EventQuery &query) {
    take(toQString(query.host));
}

void FindHost::takeItem(const QListWidgetItem *item) {
    if (item != nullptr) {
        only(item->data(Qt::UserRole).toString());
    }
}

void FindHost::only(const QString &host) {
    take(patternFor(host));
}

void FindHost::exclude(const QString &host) {
    take((isInUse() ? value() + QStringLiteral(", !") : QStringLiteral("!")) + patternFor(host));
}

bool FindHost::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (watched == m_text && key == Qt::Key_Down && m_list->count() > 0) {
            m_list->setCurrentRow(0);
            m_list->setFocus();
            return true;
        }
        if (watched == m_list && key == Qt::Key_Up && m_list->currentRow() <= 0) {
            m_text->setFocus();
            return true;
        }
        if (watched == m_list && (key == Qt::Key_Return || key == Qt::Key_Enter)) {
            takeItem(m_list->currentItem());
            return true;
        }
    }
    return FindChoice::eventFilter(watched, event);
}

}  // namespace quorbel
