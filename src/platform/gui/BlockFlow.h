#pragma once

#include <QLayout>
#include <QList>

#include <memory>
#include <vector>

namespace quorbel {

/// Lays out blocks of one width side by side, in rows: as many columns as there is room for.
class BlockFlow : public QLayout {
public:
    /// At most `columns` side by side; distances in pixels.
    BlockFlow(int columns, int horizontalGap, int verticalGap);
    ~BlockFlow() override;
    BlockFlow(const BlockFlow &) = delete;
    BlockFlow &operator=(const BlockFlow &) = delete;

    void addBlock(QLayout *block);

    void addItem(QLayoutItem *item) override;
    [[nodiscard]] int count() const override;
    [[nodiscard]] QLayoutItem *itemAt(int index) const override;
    QLayoutItem *takeAt(int index) override;

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSize() const override;
    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override;
    void setGeometry(const QRect &place) override;

private:
    [[nodiscard]] QSize blockSize() const;
    [[nodiscard]] int columnsIn(int width) const;
    [[nodiscard]] QSize sizeOf(int columns) const;

    std::vector<std::unique_ptr<QLayoutItem>> m_blocks;
    int m_columns;
    int m_horizontalGap;
    int m_verticalGap;
};

}  // namespace quorbel
