#include "reports/ReportPrinter.h"

#include "platform/gui/PaintedText.h"
#include "platform/gui/QtText.h"
#include "reports/ReportTableModel.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPageRanges>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QTextOption>

#include <algorithm>
#include <utility>

namespace quorbel {

namespace {

using Marker = ReportTableModel::Marker;

constexpr qreal kPointSize = 8;
constexpr int kMostMeasured = 2000;  // rows whose texts settle the columns' widths
constexpr qreal kMarkerSide = 0.55;  // of a line's height
constexpr qreal kMarkerRoom = 1.0;
constexpr qreal kTabLines = 2;       // lines' heights between tab stops
constexpr qreal kNumberLines = 1.6;  // what a page's number takes of the page, in lines' heights
constexpr QColor kText(0x1f, 0x27, 0x33);
constexpr QColor kRule(0xb4, 0xbd, 0xc9);

/// Shares `room` among columns: those that want less than an even share keep what they want, and
/// the others share the rest.
void fitWidths(std::vector<qreal> &wanted, qreal room) {
    std::vector<qreal *> open;
    open.reserve(wanted.size());
    for (qreal &width : wanted) {
        open.push_back(&width);
    }
    std::ranges::sort(open, {}, [](const qreal *width) { return *width; });
    for (std::size_t done = 0; done < open.size(); ++done) {
        const qreal share = room / static_cast<qreal>(open.size() - done);
        *open[done] = std::min(*open[done], share);
        room -= *open[done];
    }
    if (!wanted.empty()) {
        wanted.back() += room;
    }
}

QString printed(const QModelIndex &cell) {
    const QString text = cell.data().toString();
    return PaintedText(text).paintLines(text.size());
}

}  // namespace

ReportPrinter::ReportPrinter(const QAbstractItemModel &model, const QList<int> &columns)
    : m_model(model), m_font(QGuiApplication::font()) {
    for (const int column : columns) {
        m_columns.push_back({.number = column});
    }
    m_font.setPointSizeF(kPointSize);
    m_titleFont = m_font;
    m_titleFont.setBold(true);
}

ReportPrinter::~ReportPrinter() = default;

bool ReportPrinter::print(QPagedPaintDevice &device, const Progress &onProgress) {
    QPainter painter;
    measure(device);
    m_printedPages = 0;
    if (m_hasPageNotes && !countPages(device, painter, onProgress)) {
        return false;
    }
    for (int copy = 0; copy < m_copies; ++copy) {
        if (!printCopy(device, painter, onProgress)) {
            return false;
        }
    }
    return !painter.isActive() || painter.end();
}

bool ReportPrinter::countPages(QPagedPaintDevice &device, QPainter &painter,
                               const Progress &onProgress) {
    m_isCounting = true;
    const bool isComplete = printCopy(device, painter, onProgress);
    m_isCounting = false;
    m_pagesInAll = m_pageNumber;
    return isComplete;
}

/// With page notes, counting was the first half of the work.
bool ReportPrinter::tellProgress(const Progress &onProgress, int done) const {
    const int rows = m_model.rowCount();
    return !onProgress ||
           (!m_hasPageNotes ? onProgress(done, rows)
                            : onProgress(m_isCounting ? done : rows + done, 2 * rows));
}

bool ReportPrinter::printCopy(QPagedPaintDevice &device, QPainter &painter,
                              const Progress &onProgress) {
    m_pageNumber = 0;
    m_groupRow = -1;
    if (!beginPage(device, painter)) {
        return false;
    }
    for (int row = 0; row < m_model.rowCount(); ++row) {
        if (!printRow(device, painter, row) || !tellProgress(onProgress, row + 1)) {
            return false;
        }
    }
    return true;
}

void ReportPrinter::measure(QPagedPaintDevice &device) {
    const QFontMetricsF metrics(m_font, &device);
    m_page = QRectF(0, 0, device.width(), device.height());
    m_lineHeight = metrics.lineSpacing();
    if (m_hasPageNotes) {
        placePageNotes(device);
    }
    m_ascent = metrics.ascent();
    m_gap = m_lineHeight;
    m_pad = m_lineHeight / 8;
    m_tab = tabDistance(device);
    fitColumns(device);
    m_titles = layOut(device, m_titleFont, [this](int column) {
        return m_model.headerData(column, Qt::Horizontal).toString();
    });
}

void ReportPrinter::fitColumns(QPagedPaintDevice &device) {
    std::vector<qreal> widths;
    for (const Column &column : m_columns) {
        widths.push_back(wantedWidth(device, column.number));
    }
    const auto gaps = static_cast<qreal>(m_columns.size()) - 1;
    fitWidths(widths, m_page.width() - m_gap * gaps);
    qreal left = m_page.left();
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        m_columns[i].left = left;
        m_columns[i].width = widths[i];
        left += widths[i] + m_gap;
    }
}

qreal ReportPrinter::wantedWidth(QPagedPaintDevice &device, int column) const {
    const QFontMetricsF metrics(m_font, &device);
    qreal width = QFontMetricsF(m_titleFont, &device)
                      .horizontalAdvance(m_model.headerData(column, Qt::Horizontal).toString());
    const int rows = m_model.rowCount();
    const int measured = std::min(rows, kMostMeasured);
    for (int i = 0; i < measured; ++i) {
        const auto row = static_cast<int>(static_cast<qint64>(i) * rows / measured);
        const QModelIndex cell = m_model.index(row, column);
        width = std::max(width, metrics.horizontalAdvance(printed(cell)) + markerRoom(column));
    }
    // Lines that are a hair too long would wrap.
    return width + metrics.averageCharWidth() / 2;
}

qreal ReportPrinter::markerRoom(int column) const {
    return column == 0 ? m_lineHeight * kMarkerRoom : 0;
}

/// Layouts multiply the distance by what the device is finer than the screen.
qreal ReportPrinter::tabDistance(QPagedPaintDevice &device) const {
    QTextOption option;
    option.setTabStopDistance(1);
    QTextLayout layout(QStringLiteral("\t"), m_font, &device);
    layout.setTextOption(option);
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    const qreal unit = line.cursorToX(1);
    return unit > 0 ? kTabLines * m_lineHeight / unit : kTabLines * m_lineHeight;
}

ReportPrinter::Row ReportPrinter::layOut(QPagedPaintDevice &device, const QFont &font,
                                         const std::function<QString(int column)> &text) const {
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    // As on the screen, whatever letters a text begins with.
    option.setTextDirection(QGuiApplication::layoutDirection());
    option.setTabStopDistance(m_tab);
    Row row;
    for (const Column &column : m_columns) {
        const QString content = text(column.number);
        Cell cell;
        if (!content.isEmpty()) {
            cell = std::make_unique<QTextLayout>(content, font, &device);
            cell->setTextOption(option);
            const bool isTitle = &font == &m_titleFont;
            const qreal width = column.width - (isTitle ? 0 : markerRoom(column.number));
            cell->beginLayout();
            for (QTextLine line = cell->createLine(); line.isValid(); line = cell->createLine()) {
                line.setLineWidth(width);
            }
            cell->endLayout();
        }
        row.push_back(std::move(cell));
    }
    return row;
}

int ReportPrinter::lineCount(const Row &row) {
    int lines = 1;
    for (const Cell &cell : row) {
        lines = std::max(lines, cell ? cell->lineCount() : 0);
    }
    return lines;
}

int ReportPrinter::linesThatFit(qreal top) const {
    return static_cast<int>((m_page.bottom() - top - 2 * m_pad) / m_lineHeight);
}

void ReportPrinter::printTitles(QPainter &painter) {
    m_y = m_page.top();
    if (m_columns.empty()) {
        return;
    }
    drawLines(painter, m_titles, {0, lineCount(m_titles)}, false);
    if (m_isChosen) {
        painter.setPen(QPen(kRule, m_lineHeight / 20));
        painter.drawLine(QPointF(m_page.left(), m_y), QPointF(m_page.right(), m_y));
    }
    m_y += m_pad;
    m_bodyTop = m_y;
}

bool ReportPrinter::beginPage(QPagedPaintDevice &device, QPainter &painter) {
    ++m_pageNumber;
    const QPageRanges chosen = device.pageRanges();
    m_isChosen = !m_isCounting && (chosen.isEmpty() || chosen.contains(m_pageNumber));
    if (m_isChosen) {
        // A device begins with a page.
        if (painter.isActive() ? !device.newPage() : !painter.begin(&device)) {
            return false;
        }
        ++m_printedPages;
    }
    printTitles(painter);
    if (m_hasPageNotes) {
        printPageNumber(painter);
        printContinuation(painter);
    }
    return true;
}

void ReportPrinter::placePageNotes(const QPagedPaintDevice &device) {
    const qreal inPoints = device.pageLayout().margins(QPageLayout::Point).bottom();
    const qreal margin = inPoints / 72 * device.logicalDpiY();
    const qreal needed = kNumberLines * m_lineHeight;
    if (margin < needed) {
        m_page.setHeight(m_page.height() - needed);
        m_numberPlace = QRectF(m_page.left(), m_page.bottom(), m_page.width(), needed);
    } else {
        // Not at the edge of the paper, where few printers reach.
        m_numberPlace =
            QRectF(m_page.left(), m_page.bottom(), m_page.width(), std::max(margin / 2, needed));
    }
}

void ReportPrinter::printPageNumber(QPainter &painter) const {
    if (!m_isChosen) {
        return;
    }
    painter.setFont(m_font);
    painter.setPen(kText);
    painter.drawText(m_numberPlace, Qt::AlignHCenter | Qt::AlignBottom,
                     tr("Page %1 of %2").arg(countText(m_pageNumber), countText(m_pagesInAll)));
}

/// The value of the group that goes on, in one line over all columns.
void ReportPrinter::printContinuation(QPainter &painter) {
    const auto first = std::ranges::find(m_columns, 0, &Column::number);
    if (m_groupRow < 0 || first == m_columns.end() || linesThatFit(m_y) < 2) {
        return;
    }
    if (m_isChosen) {
        const qreal indent = markerRoom(0);
        const QRectF place(m_page.left() + indent, m_y + m_pad, m_page.width() - indent,
                           m_lineHeight);
        const QString value = m_model.index(m_groupRow, 0).data().toString();
        const QFontMetricsF metrics(m_titleFont, painter.device());
        const QString text = tr("%1 (continued)");
        const qreal room = place.width() - metrics.horizontalAdvance(text);
        painter.setFont(m_titleFont);
        painter.setPen(kText);
        painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter,
                         text.arg(metrics.elidedText(paintedRow(value), Qt::ElideRight, room)));
    }
    m_y += m_lineHeight + 2 * m_pad;
    m_bodyTop = m_y;
}

bool ReportPrinter::printRow(QPagedPaintDevice &device, QPainter &painter, int row) {
    // Until its own row is printed, nothing of a group goes on.
    const bool isGroup =
        m_model.index(row, 0).data(ReportTableModel::kMarkerRole).value<Marker>() != Marker::kNone;
    m_groupRow = isGroup ? -1 : m_groupRow;
    const Row cells = layOut(
        device, m_font, [this, row](int column) { return printed(m_model.index(row, column)); });
    const int lines = lineCount(cells);
    // Only a row that is taller than a page begins wherever there is room.
    const bool fitsAPage = lines <= linesThatFit(m_bodyTop);
    if (m_y > m_bodyTop && linesThatFit(m_y) < (fitsAPage ? lines : 1) &&
        !beginPage(device, painter)) {
        return false;
    }
    drawMarker(painter, row);
    m_groupRow = isGroup ? row : m_groupRow;
    for (Lines part{0, 0}; part.first < lines; part.first += part.count) {
        if (part.first > 0 && !beginPage(device, painter)) {
            return false;
        }
        part.count = std::min(lines - part.first, std::max(linesThatFit(m_y), 1));
        drawLines(painter, cells, part, true);
    }
    return true;
}

void ReportPrinter::drawLines(QPainter &painter, const Row &row, const Lines &lines,
                              bool leaveMarkerRoom) {
    if (m_isChosen) {
        painter.setPen(kText);
    }
    m_y += m_pad;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const int end =
            row[i] && m_isChosen ? std::min(lines.first + lines.count, row[i]->lineCount()) : 0;
        const qreal left =
            m_columns[i].left + (leaveMarkerRoom ? markerRoom(m_columns[i].number) : 0);
        qreal baseline = m_y + m_ascent;
        for (int number = lines.first; number < end; ++number) {
            // On the common base line, whatever fonts the line needs.
            const QTextLine line = row[i]->lineAt(number);
            line.draw(&painter, QPointF(left, baseline - line.ascent()) - line.position());
            baseline += m_lineHeight;
        }
    }
    m_y += lines.count * m_lineHeight + m_pad;
}

void ReportPrinter::drawMarker(QPainter &painter, int row) const {
    const auto marker = m_model.index(row, 0).data(ReportTableModel::kMarkerRole).value<Marker>();
    const auto first = std::ranges::find(m_columns, 0, &Column::number);
    if (!m_isChosen || marker == Marker::kNone || first == m_columns.end()) {
        return;
    }
    const qreal half = m_lineHeight * kMarkerSide / 2;
    const QPointF centre(first->left + half, m_y + m_pad + m_ascent - half);
    painter.setPen(QPen(kText, m_lineHeight / 12, Qt::SolidLine, Qt::FlatCap));
    painter.drawLine(centre - QPointF(half, 0), centre + QPointF(half, 0));
    if (marker == Marker::kCollapsed) {
        painter.drawLine(centre - QPointF(0, half), centre + QPointF(0, half));
    }
}

}  // namespace quorbel
