#pragma once

#include <QList>
#include <QObject>
#include <QString>

class QHBoxLayout;
class QPushButton;

namespace quorbel {

/// The links at the end of a page's headline: pictures in place of their texts where these have no
/// room, as in a narrow window in a language of long words. What they say is in their tips. It is
/// the page's.
class HeadLinks : public QObject {
public:
    struct Link {
        QPushButton *button;
        QString picture;  ///< the name of a line drawing
    };

    /// `head` is the row in which they stand, in `page`.
    HeadLinks(QHBoxLayout &head, QList<Link> links, QWidget &page);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void fit();
    void show(bool asPictures);
    [[nodiscard]] int widthOfAll() const;
    [[nodiscard]] int width() const;

    QHBoxLayout &m_head;
    QList<Link> m_links;
    QWidget &m_page;
    QStringList m_texts;
    int m_saved = 0;  ///< by the pictures; 0 while there are texts
};

}  // namespace quorbel
