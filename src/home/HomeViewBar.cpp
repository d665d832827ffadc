#include "home/HomeViewBar.h"

#include "core/PageLinks.h"
#include "home/Rating.h"
#include "home/RatingFrame.h"
#include "platform/gui/ViewBar.h"

namespace quorbel {

HomeViewBar::HomeViewBar(QWidget *parent) : QFrame(parent) {}

void HomeViewBar::paintEvent(QPaintEvent *event) {
    QFrame::paintEvent(event);
    const auto rating = static_cast<std::size_t>(m_page == nullptr ? 0 : m_page->severityStatus());
    drawBar(*this, toQColor(kRatings.at(rating).barStart), Qt::white);
}

}  // namespace quorbel
