#include "platform/gui/TableExport.h"

#include "platform/gui/FilePanel.h"
#include "platform/gui/ProgressWindow.h"

#include <QCoreApplication>
#include <QDate>
#include <QFileInfo>
#include <QMetaObject>
#include <QSaveFile>
#include <QSemaphore>
#include <QThreadPool>
#include <QWidget>

#include <unistd.h>

#include <utility>

namespace quorbel {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(quorbel::TableExport)
};

QByteArray line(int columns, char separator, const std::function<QVariant(int column)> &cell) {
    QByteArray result;
    for (int column = 0; column < columns; ++column) {
        if (column > 0) {
            result += separator;
        }
        result += cell(column).toString().toUtf8();
    }
    result += '\n';
    return result;
}

/// Files are read by programs: they have the titles that a model edits, where it has any.
QVariant titleInFile(const QAbstractItemModel &model, int column) {
    const QVariant title = model.headerData(column, Qt::Horizontal, Qt::EditRole);
    return title.isValid() ? title : model.headerData(column, Qt::Horizontal, Qt::DisplayRole);
}

/// Brings what was written to disk, which may take seconds, while others go on. Where no thread is
/// free for it, whoever commits the file waits for that.
void syncMeanwhile(QSaveFile &file, ProgressWindow &progress, std::size_t rows) {
    constexpr int kLookMs = 10;
    QSemaphore done;
    const bool isFlushed = file.flush();
    if (isFlushed && QThreadPool::globalInstance()->tryStart([&done, descriptor = file.handle()] {
            ::fdatasync(descriptor);
            done.release();
        })) {
        while (!done.tryAcquire(1, kLookMs)) {
            progress.update(rows, rows);
        }
    }
}

}  // namespace

void openExportPanel(QWidget *parent, const char *content,
                     std::function<void(const QString &path)> onChosen) {
    const QString day = QDate::currentDate().toString(Qt::ISODate);
    openFilePanel(parent,
                  {.message = Texts::tr("Please select export file name with 'txt' or 'csv' "
                                        "extensions:"),
                   .extensions = {QStringLiteral("txt"), QStringLiteral("csv")},
                   .folder = {},
                   .name = QStringLiteral("Quorbel %1 %2.txt").arg(QLatin1String(content), day),
                   .save = true},
                  [parent, chosen = std::move(onChosen)](const QString &path) {
                      // Not from within the panel's own signal: writing runs the event loop, which
                      // may delete the closed panel.
                      const auto tell = [chosen, path] { chosen(path); };
                      QMetaObject::invokeMethod(parent, tell, Qt::QueuedConnection);
                  });
}

bool exportTable(const QString &path, const QAbstractItemModel &model, const ExportRows &rows,
                 QWidget *parent) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    ProgressWindow progress({.title = QStringLiteral("Quorbel"),
                             .work = Texts::tr("Writing the export file"),
                             .accessibleName = Texts::tr("Rows written")},
                            ProgressWindow::Unit::kRows, parent);
    const int columns = model.columnCount();
    const char separator = QFileInfo(path).suffix() == QStringLiteral("csv") ? ',' : '\t';
    file.write(
        line(columns, separator, [&model](int column) { return titleInFile(model, column); }));
    for (std::size_t number = 0; number < rows.count; ++number) {
        if (rows.areStillThere && !rows.areStillThere()) {
            return false;
        }
        const QModelIndex row = rows.at(number);
        if (row.isValid() && file.write(line(columns, separator, [&row](int column) {
                return row.siblingAtColumn(column).data(Qt::DisplayRole);
            })) < 0) {
            return false;
        }
        if (!progress.update(number + 1, rows.count)) {
            return false;
        }
    }
    syncMeanwhile(file, progress, rows.count);
    return file.commit();
}

}  // namespace quorbel
