#include "platform/gui/ColumnMemory.h"

#include "platform/gui/WindowMemory.h"

#include <QEvent>
#include <QHeaderView>
#include <QTableView>

#include <algorithm>

namespace quorbel {

namespace {

QString key(const QString &name) {
    return QStringLiteral("Columns/") + name;
}

std::optional<ColumnMemory::Column> readColumn(const QString &text) {
    const QStringList parts = text.split(u':');
    bool isIndex = false;
    bool isWidth = false;
    const int index = parts.value(0).toInt(&isIndex);
    const int width = parts.value(1).toInt(&isWidth);
    if (parts.size() != 2 || !isIndex || !isWidth || width < 1 || width > ColumnMemory::kWidest) {
        return std::nullopt;
    }
    return ColumnMemory::Column{index, width};
}

/// Whether each of the first columns is named once.
bool isOrder(ColumnMemory::Columns columns) {
    std::ranges::sort(columns, {}, &ColumnMemory::Column::index);
    for (int index = 0; const auto &column : columns) {
        if (column.index != index++) {
            return false;
        }
    }
    return true;
}

}  // namespace

ColumnMemory::ColumnMemory(QTableView &table) : QObject(&table), m_table(table) {
    table.horizontalHeader()->setSectionsMovable(true);
    table.horizontalHeader()->viewport()->installEventFilter(this);
}

bool ColumnMemory::recall(const QString &name) {
    m_name = name;
    const auto known = remembered();
    Columns wanted = known.value_or(columns());
    if (!known) {
        std::ranges::sort(wanted, {}, &Column::index);
    }
    apply(wanted);
    return known.has_value();
}

ColumnMemory::Columns ColumnMemory::columns() const {
    const QHeaderView &header = *m_table.horizontalHeader();
    Columns result;
    for (int place = 0; place < header.count(); ++place) {
        const int index = header.logicalIndex(place);
        result.push_back({index, header.sectionSize(index)});
    }
    return result;
}

std::optional<ColumnMemory::Columns> ColumnMemory::remembered() const {
    const QHeaderView &header = *m_table.horizontalHeader();
    Columns result;
    for (const QString &text : quorbel::remembered(key(m_name)).toStringList()) {
        const auto column = readColumn(text);
        if (!column) {
            return std::nullopt;
        }
        result.push_back(*column);
    }
    const bool fits = !result.empty() && std::ssize(result) == header.count() && isOrder(result) &&
                      (header.isFirstSectionMovable() || result.front().index == 0);
    return fits ? std::optional(result) : std::nullopt;
}

void ColumnMemory::apply(const Columns &columns) {
    QHeaderView &header = *m_table.horizontalHeader();
    for (int place = 0; const auto &[index, width] : columns) {
        header.moveSection(header.visualIndex(index), place++);
    }
    for (const auto &[index, width] : columns) {
        if (width != header.sectionSize(index)) {
            header.resizeSection(index, std::max(width, header.minimumSectionSize()));
        }
    }
}

void ColumnMemory::remember() {
    QStringList texts;
    for (const auto &[index, width] : columns()) {
        texts.append(QStringLiteral("%1:%2").arg(index).arg(std::min(width, kWidest)));
    }
    quorbel::remember(key(m_name), texts);
}

bool ColumnMemory::eventFilter(QObject *watched, QEvent *event) {
    // The program sets widths, too; the user does so with a button pressed.
    switch (event->type()) {
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonDblClick:
            m_pressed = columns();
            break;
        case QEvent::MouseButtonRelease:
            // The header handles it first.
            QMetaObject::invokeMethod(
                this,
                [this] {
                    if (!m_name.isEmpty() && !m_pressed.empty() && m_pressed != columns()) {
                        remember();
                    }
                    m_pressed.clear();
                },
                Qt::QueuedConnection);
            break;
        default:
            break;
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace quorbel
