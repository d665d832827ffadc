#pragma once

#include <QCoreApplication>
#include <QFont>
#include <QList>
#include <QRectF>
#include <QTextLayout>

#include <functional>
#include <memory>
#include <vector>

class QAbstractItemModel;
class QPagedPaintDevice;
class QPainter;

namespace quorbel {

/// Prints a report's table, as it stands, on as many pages as it takes.
///
/// The columns together are as wide as the paper lets them be; longer texts wrap, and nothing is
/// cut off. A row stands on one page unless it is taller than that. Each page begins with the
/// columns' titles and has nothing else of its own, unless page notes are asked for.
class ReportPrinter {
    Q_DECLARE_TR_FUNCTIONS(quorbel::ReportPrinter)

public:
    /// Told of the rows printed, now and then; returning false ends the printing.
    using Progress = std::function<bool(int done, int inAll)>;

    /// `columns` are the model's columns to print. The model outlives the printer; rows that go
    /// while it prints are left out.
    ReportPrinter(const QAbstractItemModel &model, const QList<int> &columns);
    ~ReportPrinter();
    ReportPrinter(const ReportPrinter &) = delete;
    ReportPrinter &operator=(const ReportPrinter &) = delete;

    /// For a device that makes no copies by itself.
    void setCopies(int copies) { m_copies = copies; }
    /// Has each page that goes on with a group begin with that group's value, and say in the bottom
    /// margin which page of how many it is; where that margin is too low, at the end of the page.
    /// Lays out everything twice, as nobody knows before how many pages there will be.
    void setPageNotes(bool pageNotes) { m_hasPageNotes = pageNotes; }

    /// Prints the device's chosen pages on the whole of its paintable area. False when the device
    /// refuses or `onProgress` ended it. Where none of the chosen pages exists, nothing is begun on
    /// the device.
    bool print(QPagedPaintDevice &device, const Progress &onProgress = {});
    /// How many pages there are, chosen or not; known after print() has returned true.
    [[nodiscard]] int pageCount() const { return m_pageNumber; }
    /// How many pages print() has begun on the device, in all copies.
    [[nodiscard]] int printedPages() const { return m_printedPages; }

private:
    struct Column {
        int number = 0;
        qreal left = 0;
        qreal width = 0;  ///< without the space between columns
    };
    struct Lines {
        int first = 0;
        int count = 0;
    };
    using Cell = std::unique_ptr<QTextLayout>;
    using Row = std::vector<Cell>;  // null for an empty cell

    bool printCopy(QPagedPaintDevice &device, QPainter &painter, const Progress &onProgress);
    bool countPages(QPagedPaintDevice &device, QPainter &painter, const Progress &onProgress);
    [[nodiscard]] bool tellProgress(const Progress &onProgress, int done) const;
    void measure(QPagedPaintDevice &device);
    void fitColumns(QPagedPaintDevice &device);
    [[nodiscard]] qreal wantedWidth(QPagedPaintDevice &device, int column) const;
    [[nodiscard]] qreal markerRoom(int column) const;
    [[nodiscard]] Row layOut(QPagedPaintDevice &device, const QFont &font,
                             const std::function<QString(int column)> &text) const;
    [[nodiscard]] static int lineCount(const Row &row);
    [[nodiscard]] int linesThatFit(qreal top) const;
    void printTitles(QPainter &painter);
    bool beginPage(QPagedPaintDevice &device, QPainter &painter);
    [[nodiscard]] qreal tabDistance(QPagedPaintDevice &device) const;
    bool printRow(QPagedPaintDevice &device, QPainter &painter, int row);
    void placePageNotes(const QPagedPaintDevice &device);
    void printContinuation(QPainter &painter);
    void printPageNumber(QPainter &painter) const;
    void drawLines(QPainter &painter, const Row &row, const Lines &lines, bool leaveMarkerRoom);
    void drawMarker(QPainter &painter, int row) const;

    const QAbstractItemModel &m_model;
    int m_copies = 1;
    bool m_hasPageNotes = false;
    std::vector<Column> m_columns;
    QFont m_font;
    QFont m_titleFont;
    Row m_titles;
    QRectF m_page;
    qreal m_lineHeight = 0;
    qreal m_ascent = 0;
    qreal m_tab = 0;  // between tab stops, in the layout's unit
    qreal m_gap = 0;  // between columns
    qreal m_pad = 0;  // above and below a row's text
    qreal m_y = 0;    // how far the page is filled
    qreal m_bodyTop = 0;
    int m_pageNumber = 0;
    bool m_isChosen = true;  // whether this page is printed, or only counted
    int m_printedPages = 0;
    // For page notes.
    bool m_isCounting = false;  // no page is printed
    int m_pagesInAll = 0;
    QRectF m_numberPlace;
    int m_groupRow = -1;  // of the row that is being printed
};

}  // namespace quorbel
