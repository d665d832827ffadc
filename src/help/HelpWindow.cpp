#include "help/HelpWindow.h"

#include "platform/gui/PlaceMemory.h"
#include "platform/gui/ScreenFit.h"
#include "ui_HelpWindow.h"

#include <QShortcut>
#include <QSignalBlocker>

#include <algorithm>

namespace quorbel {

HelpWindow::HelpWindow(QWidget *parent)
    : QWidget(parent, Qt::Window), m_book(loadHelpBook()), ui(std::make_unique<Ui::HelpWindow>()) {
    ui->setupUi(this);
    ui->splitter->setStretchFactor(1, 1);
    for (const HelpChapter &chapter : m_book) {
        ui->chapters->addItem(chapter.title);
    }
    ui->noChapter->hide();
    new ScreenFit(*this, minimumSize());
    new PlaceMemory(*this, QStringLiteral("help"));
    resize(size().boundedTo(roomOnScreen(*this)));
    connectControls();
    ui->chapters->setCurrentRow(0);
}

HelpWindow::~HelpWindow() = default;

void HelpWindow::connectControls() {
    connect(ui->search, &QLineEdit::textChanged, this, &HelpWindow::filterChapters);
    connect(ui->chapters, &QListWidget::currentRowChanged, this, &HelpWindow::showChapter);
    connect(ui->chapter, &QTextBrowser::sourceChanged, this, &HelpWindow::chapterShown);
    connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, ui->search, [this] {
        ui->search->setFocus();
        ui->search->selectAll();
    });
    connect(new QShortcut(QKeySequence::Close, this), &QShortcut::activated, this, &QWidget::close);
}

void HelpWindow::makeVisible() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void HelpWindow::filterChapters() {
    m_words = searchWords(ui->search->text());
    int firstFound = -1;
    for (int row = 0; row < ui->chapters->count(); ++row) {
        const bool found = containsAll(m_book[static_cast<std::size_t>(row)], m_words);
        ui->chapters->setRowHidden(row, !found);
        if (found && firstFound < 0) {
            firstFound = row;
        }
    }
    ui->noChapter->setVisible(firstFound < 0);
    const int current = ui->chapters->currentRow();
    if (firstFound >= 0 && (current < 0 || ui->chapters->isRowHidden(current))) {
        ui->chapters->setCurrentRow(firstFound);
    }
    ui->chapter->mark(m_words);
}

void HelpWindow::showChapter(int row) {
    if (row < 0) {
        return;
    }
    const QUrl &url = m_book[static_cast<std::size_t>(row)].url;
    if (ui->chapter->source().adjusted(QUrl::RemoveFragment) != url) {
        ui->chapter->setSource(url);
    }
}

void HelpWindow::chapterShown(const QUrl &url) {
    const auto shown = std::find_if(m_book.begin(), m_book.end(), [&url](const auto &chapter) {
        return chapter.url == url.adjusted(QUrl::RemoveFragment);
    });
    if (shown != m_book.end()) {
        // Else the list would open the chapter again, without the place that a link leads to.
        const QSignalBlocker blocker(ui->chapters);
        ui->chapters->setCurrentRow(static_cast<int>(shown - m_book.begin()));
    }
    // A link has its own place to show.
    if (!url.hasFragment()) {
        ui->chapter->mark(m_words);
    }
}

}  // namespace quorbel
