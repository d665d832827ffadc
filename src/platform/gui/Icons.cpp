#include "platform/gui/Icons.h"

#include <QBuffer>
#include <QFile>
#include <QIconEngine>
#include <QImageReader>
#include <QLabel>
#include <QPainter>
#include <QPixmap>

namespace quorbel {

namespace {

constexpr QByteArrayView kDrawnColour = "#44505f";  // the stroke of every line drawing

QString imagePath(const QString &name) {
    return QStringLiteral(":/images/%1.svg").arg(name);
}

/// Draws a line drawing in the colour that the icon's mode asks for.
class LineIconEngine : public QIconEngine {
public:
    LineIconEngine(QByteArray drawing, const QColor &colour)
        : m_drawing(std::move(drawing)), m_colour(colour) {}

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode,
               QIcon::State state) override {
        const QSize size = rect.size() * painter->device()->devicePixelRatioF();
        painter->drawPixmap(rect, pixmap(size, mode, state));
    }
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override {
        QByteArray drawing = m_drawing;
        drawing.replace(kDrawnColour, colourFor(mode, state).name().toLatin1());
        QBuffer buffer(&drawing);
        QImageReader reader(&buffer, "svg");
        reader.setScaledSize(size);
        return QPixmap::fromImage(reader.read());
    }
    [[nodiscard]] QIconEngine *clone() const override { return new LineIconEngine(*this); }

private:
    [[nodiscard]] QColor colourFor(QIcon::Mode mode, QIcon::State state) const {
        if (mode == QIcon::Disabled) {
            return {0xb3, 0xbb, 0xc5};
        }
        if (mode == QIcon::Selected) {
            return Qt::white;
        }
        return state == QIcon::On ? QColor(0x00, 0x66, 0xcc) : m_colour;
    }

    QByteArray m_drawing;
    QColor m_colour;
};

}  // namespace

QIcon severityIcon(const QString &name) {
    for (const auto *known : {"Normal", "Moderate", "Severe"}) {
        if (name == QLatin1StringView(known)) {
            return QIcon(imagePath(name));
        }
    }
    return {};
}

QIcon lineIcon(const QString &name, const QColor &colour) {
    QFile file(imagePath(QStringLiteral("icon-") + name));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QColor drawn = QColor(QLatin1StringView(kDrawnColour));
    return QIcon(new LineIconEngine(file.readAll(), colour.isValid() ? colour : drawn));
}

QIcon applicationIcon() {
    return QIcon(imagePath(QStringLiteral("Quorbel")));
}

void setLabelIcon(QLabel &label, const QIcon &icon, int size) {
    label.setPixmap(icon.pixmap(QSize(size, size), label.devicePixelRatioF()));
}

}  // namespace quorbel
