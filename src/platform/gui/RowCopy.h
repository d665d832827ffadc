#pragma once

#include <QBasicTimer>
#include <QItemSelectionModel>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

class QTableView;

namespace quorbel {

/// One cell, or one line of several, as it is copied: to the letter, but for tabs and the ends of
/// lines, each of which becomes a space, so that a row stays a row. A carriage return and its line
/// feed are one end.
QString copiedCell(QString text);

/// A row of the table as it is copied: the texts of the columns shown, in the order in which they
/// stand, with tabs between them.
QString copiedRow(const QTableView &table, int row);

/// Copies rows of a table to the clipboard, one a line, without a line end behind the last.
///
/// A few rows are there when start() returns. Many are gathered in slices between which events are
/// handled; meanwhile the table shows a busy pointer and the clipboard stays as it is. Rows that
/// come meanwhile change nothing, rows that go before their turn are left out. Another start(), or
/// whatever else is copied anywhere, puts an end to it.
class RowCopy : public QObject {
    Q_OBJECT

public:
    /// The text of a row; nothing when the row adds none.
    using Text = std::function<std::optional<QString>(int row)>;

    enum class Failure { kTooLong, kRowsChanged };

    static constexpr int kSliceMs = 20;
    /// What a million usual events need, a quarter of a gigabyte.
    static constexpr qsizetype kMostCharacters = qsizetype{1} << 27;

    /// The table outlives this.
    explicit RowCopy(QTableView &table, QObject *parent = nullptr);

    /// Copies the selected rows. Where no row has a text, the clipboard stays as it is.
    void start(Text text);
    [[nodiscard]] bool isRunning() const { return m_left != nullptr; }
    /// kMostCharacters unless this is called.
    void setMostCharacters(qsizetype most) { m_most = most; }

Q_SIGNALS:
    /// Nothing was copied, and nothing more will be.
    void failed(quorbel::RowCopy::Failure why);

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    void copySlice();
    [[nodiscard]] bool take(int row);
    void finish();
    void stop();
    void fail(Failure why);

    QTableView &m_table;
    qsizetype m_most = kMostCharacters;
    Text m_text;
    QString m_copied;
    bool m_hasRows = false;
    // The rows that are still to be copied, wherever they move; null when there is nothing to do.
    std::unique_ptr<QItemSelectionModel> m_left;
    QBasicTimer m_nextSlice;
};

}  // namespace quorbel
