#include "events/HeadLinks.h"

#include "platform/gui/Icons.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPushButton>

#include <utility>

namespace quorbel {

HeadLinks::HeadLinks(QHBoxLayout &head, QList<Link> links, QWidget &page)
    : QObject(&page), m_head(head), m_links(std::move(links)), m_page(page) {
    for (const Link &link : std::as_const(m_links)) {
        m_texts += link.button->text();
    }
    page.installEventFilter(this);
}

bool HeadLinks::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest) {
        fit();
    }
    return QObject::eventFilter(watched, event);
}

void HeadLinks::fit() {
    const QMargins margins = m_page.layout()->contentsMargins();
    const int room = m_page.width() - margins.left() - margins.right();
    const int needed = widthOfAll() + m_saved;
    if (const bool asPictures = needed > room; asPictures != (m_saved > 0)) {
        const int before = width();
        show(asPictures);
        m_saved = asPictures ? before - width() : 0;
    }
}

/// The layout's own least width would have the texts cut.
int HeadLinks::widthOfAll() const {
    int sum = m_head.sizeHint().width();
    for (int i = 0; i < m_head.count(); ++i) {
        if (const QSpacerItem *space = m_head.itemAt(i)->spacerItem()) {
            sum -= space->sizeHint().width();
        }
    }
    return sum;
}

int HeadLinks::width() const {
    int sum = 0;
    for (const Link &link : m_links) {
        sum += link.button->sizeHint().width();
    }
    return sum;
}

void HeadLinks::show(bool asPictures) {
    for (qsizetype i = 0; i < m_links.size(); ++i) {
        QPushButton &button = *m_links[i].button;
        button.setText(asPictures ? QString() : m_texts[i]);
        button.setIcon(asPictures ? lineIcon(m_links[i].picture) : QIcon());
    }
}

}  // namespace quorbel
