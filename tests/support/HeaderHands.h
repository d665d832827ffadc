#pragma once

#include <QHeaderView>
#include <QTableView>
#include <QTest>

#include <vector>

namespace quorbel::testing {

/// The hand at a table's header, whose columns are in sight.
class HeaderHands {
public:
    explicit HeaderHands(QTableView &table) : m_header(*table.horizontalHeader()) {}

    void drag(int column, int by) { move(edge(column), edge(column) + QPoint(by, 0)); }
    void doubleClickEdge(int column) {
        QTest::mouseClick(m_header.viewport(), Qt::LeftButton, {}, edge(column));
        QTest::mouseDClick(m_header.viewport(), Qt::LeftButton, {}, edge(column));
        settle();
    }
    /// Takes a column to the place of another.
    void moveTo(int column, int other) {
        const bool toTheRight = m_header.visualIndex(column) < m_header.visualIndex(other);
        const QPoint end =
            toTheRight ? edge(other) - QPoint(8, 0)
                       : QPoint(m_header.sectionViewportPosition(other) + 8, m_header.height() / 2);
        move(edge(column) - QPoint(m_header.sectionSize(column) / 2, 0), end);
    }
    /// The columns as they stand.
    [[nodiscard]] std::vector<int> order() const {
        std::vector<int> result;
        for (int place = 0; place < m_header.count(); ++place) {
            result.push_back(m_header.logicalIndex(place));
        }
        return result;
    }

private:
    [[nodiscard]] QPoint edge(int column) const {
        return {m_header.sectionViewportPosition(column) + m_header.sectionSize(column) - 1,
                m_header.height() / 2};
    }
    void move(const QPoint &from, const QPoint &to) {
        QWidget *viewport = m_header.viewport();
        QTest::mousePress(viewport, Qt::LeftButton, {}, from);
        QTest::mouseMove(viewport, (from + to) / 2);
        QTest::mouseMove(viewport, to);
        QTest::mouseRelease(viewport, Qt::LeftButton, {}, to);
        settle();
    }
    static void settle() { QCoreApplication::processEvents(); }

    QHeaderView &m_header;
};

}  // namespace quorbel::testing
