#include "help/HelpBrowser.h"

#include "help/HelpBook.h"

#include <QFile>
#include <QImage>
#include <QPainter>
#include <QTextBlock>
#include <QTextCursor>

#include <algorithm>
#include <utility>
#include <vector>

namespace quorbel {

namespace {

constexpr int kMargin = 28;

struct Picture {
    int position;
    QTextImageFormat format;
};

std::vector<Picture> picturesIn(const QTextDocument &document) {
    std::vector<Picture> pictures;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto part = block.begin(); !part.atEnd(); ++part) {
            const QTextFragment fragment = part.fragment();
            if (fragment.charFormat().isImageFormat()) {
                pictures.push_back({fragment.position(), fragment.charFormat().toImageFormat()});
            }
        }
    }
    return pictures;
}

/// The windows in the pictures are as white as the page.
void outline(QImage &picture) {
    QPainter painter(&picture);
    painter.setPen(QColor(0xd5, 0xda, 0xe1));
    painter.drawRect(picture.rect().adjusted(0, 0, -1, -1));
}

}  // namespace

HelpBrowser::HelpBrowser(QWidget *parent) : QTextBrowser(parent) {
    setOpenExternalLinks(true);
    document()->setDocumentMargin(kMargin);
    QFile style(QStringLiteral(":/help/book.css"));
    if (style.open(QIODevice::ReadOnly)) {
        document()->setDefaultStyleSheet(QString::fromUtf8(style.readAll()));
    }
    connect(this, &QTextBrowser::sourceChanged, this, [this](const QUrl &url) {
        fitPictures();
        // The place in the chapter was looked for with the pictures in their own size.
        if (url.hasFragment()) {
            scrollToAnchor(url.fragment());
        }
    });
}

QVariant HelpBrowser::loadResource(int type, const QUrl &name) {
    QVariant resource = QTextBrowser::loadResource(type, name);
    if (type == QTextDocument::HtmlResource) {
        // Only cells of tables have room between their ground's edge and the text.
        QByteArray html = resource.toByteArray();
        html.replace("<pre>",
                     "<table border=\"0\" cellspacing=\"0\" cellpadding=\"9\" width=\"99%\">"
                     "<tr><td class=\"code\"><pre>");
        html.replace("</pre>", "</pre></td></tr></table>");
        resource = html;
    }
    return resource;
}

void HelpBrowser::doSetSource(const QUrl &name, QTextDocument::ResourceType type) {
    QTextBrowser::doSetSource(chapterUrl(name), type);
}

void HelpBrowser::resizeEvent(QResizeEvent *event) {
    QTextBrowser::resizeEvent(event);
    fitPictures();
}

int HelpBrowser::textWidth() const {
    return std::max(viewport()->width() - 2 * kMargin, 1);
}

void HelpBrowser::fitPictures() {
    for (Picture &picture : picturesIn(*document())) {
        const QUrl url(picture.format.name());
        const QImage original(QLatin1Char(':') + url.path());
        const int width = std::min(original.width(), textWidth());
        if (original.isNull() || width == qRound(picture.format.width())) {
            continue;
        }
        // The document itself would scale without smoothing.
        const double ratio = devicePixelRatioF();
        QImage scaled = original.scaledToWidth(qRound(width * ratio), Qt::SmoothTransformation);
        outline(scaled);
        scaled.setDevicePixelRatio(ratio);
        document()->addResource(QTextDocument::ImageResource, url, scaled);
        picture.format.setWidth(width);
        picture.format.setHeight(scaled.height() / ratio);
        QTextCursor cursor(document());
        cursor.setPosition(picture.position);
        cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
        cursor.setCharFormat(picture.format);
    }
}

void HelpBrowser::mark(const QStringList &words) {
    QList<ExtraSelection> marks;
    QTextCursor first;
    for (const QString &word : words) {
        QTextCursor hit = document()->find(word);
        while (!hit.isNull()) {
            if (first.isNull() || hit.selectionStart() < first.selectionStart()) {
                first = hit;
            }
            ExtraSelection found;
            found.cursor = hit;
            found.format.setBackground(QColor(0xff, 0xe5, 0x8a));
            marks.append(std::move(found));
            hit = document()->find(word, hit);
        }
    }
    setExtraSelections(marks);
    if (!first.isNull()) {
        first.setPosition(first.selectionStart());
        setTextCursor(first);
        ensureCursorVisible();
    }
}

}  // namespace quorbel
