#pragma once

#include <QStringList>
#include <QTextBrowser>

namespace quorbel {

/// Shows one chapter: pictures no wider than the text, commands on a ground of their own, search
/// words marked. Links to other chapters open here, all others in the web browser.
class HelpBrowser : public QTextBrowser {
    Q_OBJECT

public:
    explicit HelpBrowser(QWidget *parent = nullptr);

    /// Marks every place where one of the words stands, and shows the first.
    void mark(const QStringList &words);

    QVariant loadResource(int type, const QUrl &name) override;

protected:
    void doSetSource(const QUrl &name, QTextDocument::ResourceType type) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void fitPictures();
    [[nodiscard]] int textWidth() const;
};

}  // namespace quorbel
