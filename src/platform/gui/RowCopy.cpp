#include "platform/gui/RowCopy.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QHeaderView>
#include <QTableView>
#include <QTimerEvent>

#include <algorithm>
#include <utility>
#include <vector>

namespace quorbel {

namespace {

bool endsCell(QChar character) {
    switch (character.unicode()) {
        case u'\t':
        case u'\n':
        case u'\v':
        case u'\f':
        case u'\r':
        case u'\x85':
        case u'\u2028':
        case u'\u2029':
            return true;
        default:
            return false;
    }
}

std::vector<QItemSelectionRange> fromTheTop(const QItemSelection &selection) {
    std::vector<QItemSelectionRange> ranges(selection.begin(), selection.end());
    std::ranges::sort(ranges, {}, &QItemSelectionRange::top);
    return ranges;
}

}  // namespace

QString copiedCell(QString text) {
    if (std::ranges::none_of(text, endsCell)) {
        return text;
    }
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    std::ranges::replace_if(text, endsCell, QChar(u' '));
    return text;
}

QString copiedRow(const QTableView &table, int row) {
    const QHeaderView &header = *table.horizontalHeader();
    QString result;
    bool isFirst = true;
    for (int place = 0; place < header.count(); ++place) {
        const int column = header.logicalIndex(place);
        if (header.isSectionHidden(column)) {
            continue;
        }
        if (!std::exchange(isFirst, false)) {
            result += u'\t';
        }
        result += copiedCell(table.model()->index(row, column).data().toString());
    }
    return result;
}

RowCopy::RowCopy(QTableView &table, QObject *parent) : QObject(parent), m_table(table) {
    connect(QGuiApplication::clipboard(), &QClipboard::dataChanged, this, &RowCopy::stop);
}

void RowCopy::start(Text text) {
    stop();
    m_text = std::move(text);
    m_left = std::make_unique<QItemSelectionModel>(m_table.model(), nullptr);
    m_left->select(m_table.selectionModel()->selection(), QItemSelectionModel::Select);
    connect(m_table.model(), &QAbstractItemModel::modelAboutToBeReset, m_left.get(),
            [this] { fail(Failure::kRowsChanged); });
    copySlice();
    if (isRunning()) {
        m_table.viewport()->setCursor(Qt::BusyCursor);
        m_nextSlice.start(0, this);
    }
}

void RowCopy::timerEvent(QTimerEvent *event) {
    if (event->timerId() == m_nextSlice.timerId()) {
        copySlice();
    } else {
        QObject::timerEvent(event);
    }
}

void RowCopy::copySlice() {
    QElapsedTimer clock;
    clock.start();
    QItemSelection taken;
    for (const QItemSelectionRange &range : fromTheTop(m_left->selection())) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            if (!take(row)) {
                fail(Failure::kTooLong);
                return;
            }
            if (clock.hasExpired(kSliceMs)) {
                const QAbstractItemModel &model = *m_table.model();
                taken.select(model.index(range.top(), 0),
                             model.index(row, model.columnCount() - 1));
                m_left->select(taken, QItemSelectionModel::Deselect);
                return;
            }
        }
        taken.append(range);
    }
    finish();
}

bool RowCopy::take(int row) {
    const std::optional<QString> text = m_text(row);
    if (!text) {
        return true;
    }
    if (m_copied.size() + 1 + text->size() > m_most) {
        return false;
    }
    if (std::exchange(m_hasRows, true)) {
        m_copied += u'\n';
    }
    m_copied += *text;
    return true;
}

void RowCopy::finish() {
    const bool hasRows = m_hasRows;
    const QString copied = std::exchange(m_copied, {});
    stop();
    if (hasRows) {
        QGuiApplication::clipboard()->setText(copied);
    }
}

void RowCopy::stop() {
    if (!isRunning()) {
        return;
    }
    m_nextSlice.stop();
    m_left.release()->deleteLater();  // one of its own signals may have led here
    m_copied.clear();
    m_hasRows = false;
    m_table.viewport()->unsetCursor();
}

void RowCopy::fail(Failure why) {
    stop();
    Q_EMIT failed(why);
}

}  // namespace quorbel
