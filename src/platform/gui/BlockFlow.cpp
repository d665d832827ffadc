#include "platform/gui/BlockFlow.h"

#include <QStyle>
#include <QWidget>

#include <algorithm>

namespace quorbel {

BlockFlow::BlockFlow(int columns, int horizontalGap, int verticalGap)
    : m_columns(columns), m_horizontalGap(horizontalGap), m_verticalGap(verticalGap) {}

BlockFlow::~BlockFlow() = default;

void BlockFlow::addBlock(QLayout *block) {
    addChildLayout(block);
    addItem(block);
}

void BlockFlow::addItem(QLayoutItem *item) {
    m_blocks.emplace_back(item);
    invalidate();
}

int BlockFlow::count() const {
    return static_cast<int>(m_blocks.size());
}

QLayoutItem *BlockFlow::itemAt(int index) const {
    return index >= 0 && index < count() ? m_blocks[static_cast<std::size_t>(index)].get()
                                         : nullptr;
}

QLayoutItem *BlockFlow::takeAt(int index) {
    if (itemAt(index) == nullptr) {
        return nullptr;
    }
    QLayoutItem *item = m_blocks[static_cast<std::size_t>(index)].release();
    m_blocks.erase(m_blocks.begin() + index);
    return item;
}

QSize BlockFlow::sizeHint() const {
    return sizeOf(m_columns);
}

QSize BlockFlow::minimumSize() const {
    return {blockSize().width(), sizeOf(m_columns).height()};
}

int BlockFlow::heightForWidth(int width) const {
    return sizeOf(columnsIn(width)).height();
}

void BlockFlow::setGeometry(const QRect &place) {
    QLayout::setGeometry(place);
    const int columns = columnsIn(place.width());
    const int height = blockSize().height();
    const int width = (place.width() - (columns - 1) * m_horizontalGap) / columns;
    for (int i = 0; i < count(); ++i) {
        const int left = place.left() + i % columns * (width + m_horizontalGap);
        const int top = place.top() + i / columns * (height + m_verticalGap);
        const QWidget *parent = parentWidget();
        itemAt(i)->setGeometry(
            QStyle::visualRect(parent == nullptr ? Qt::LeftToRight : parent->layoutDirection(),
                               place, {left, top, width, height}));
    }
}

QSize BlockFlow::blockSize() const {
    QSize size(0, 0);
    for (const auto &block : m_blocks) {
        size = size.expandedTo(block->sizeHint());
    }
    return size;
}

int BlockFlow::columnsIn(int width) const {
    const int fitting = (width + m_horizontalGap) / (blockSize().width() + m_horizontalGap);
    return std::clamp(fitting, 1, m_columns);
}

QSize BlockFlow::sizeOf(int columns) const {
    const QSize block = blockSize();
    const int rows = (count() + columns - 1) / columns;
    return {columns * (block.width() + m_horizontalGap) - m_horizontalGap,
            rows * (block.height() + m_verticalGap) - m_verticalGap};
}

}  // namespace quorbel
