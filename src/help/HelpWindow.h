#pragma once

#include "help/HelpBook.h"

#include <QWidget>

#include <memory>
#include <vector>

namespace Ui {
class HelpWindow;
}

namespace quorbel {

/// The help book in a window of its own: chapters and a search field beside the chapter's text.
class HelpWindow : public QWidget {
    Q_OBJECT

public:
    explicit HelpWindow(QWidget *parent = nullptr);
    ~HelpWindow() override;

    /// Shows the window, minimised or not, in front of the others.
    void makeVisible();

private:
    void connectControls();
    void filterChapters();
    void showChapter(int row);
    void chapterShown(const QUrl &url);

    std::vector<HelpChapter> m_book;
    QStringList m_words;
    std::unique_ptr<Ui::HelpWindow> ui;
};

}  // namespace quorbel
