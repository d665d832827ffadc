#pragma once

#include "platform/gui/Language.h"
#include "support/PseudoLanguage.h"
#include "support/TemporaryFolder.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QDebug>
#include <QGuiApplication>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <QSpinBox>
#include <QStyleOptionFrame>

namespace quorbel {

using namespace Qt::StringLiterals;

// What the tests of how pages and sheets fit look at.

inline QByteArray told(const QWidget &widget) {
    const QRect place(widget.mapTo(widget.window(), QPoint()), widget.size());
    QString text;
    QDebug(&text) << widget.objectName() << place << "in" << widget.window()->frameGeometry()
                  << "on" << widget.screen()->availableGeometry();
    return text.toUtf8();
}

inline bool isControl(const QWidget &widget) {
    return qobject_cast<const QAbstractButton *>(&widget) != nullptr ||
           qobject_cast<const QLineEdit *>(&widget) != nullptr ||
           qobject_cast<const QPlainTextEdit *>(&widget) != nullptr ||
           qobject_cast<const QComboBox *>(&widget) != nullptr ||
           qobject_cast<const QAbstractSpinBox *>(&widget) != nullptr ||
           qobject_cast<const QAbstractSlider *>(&widget) != nullptr ||
           qobject_cast<const QAbstractItemView *>(&widget) != nullptr;
}

inline bool isPart(const QWidget &widget) {
    const QWidget *parent = widget.parentWidget();
    return qobject_cast<const QScrollBar *>(&widget) != nullptr ||
           widget.objectName().startsWith("qt_"_L1) || widget.size().isNull() ||
           qobject_cast<const QComboBox *>(parent) != nullptr ||
           qobject_cast<const QAbstractItemView *>(parent) != nullptr;
}

inline QScrollArea *scrollAreaAround(const QWidget &widget) {
    for (QWidget *parent = widget.parentWidget(); parent != nullptr;
         parent = parent->parentWidget()) {
        if (auto *area = qobject_cast<QScrollArea *>(parent)) {
            return area;
        }
    }
    return nullptr;
}

inline bool isInside(const QWidget &widget, const QWidget &around) {
    return around.rect().contains(QRect(widget.mapTo(&around, QPoint()), widget.size()));
}

/// Whether the user can get to see the whole of it, or its beginning where it is larger than that.
inline bool isReachable(QWidget &control) {
    QScrollArea *area = scrollAreaAround(control);
    if (area == nullptr) {
        return isInside(control, *control.window());
    }
    const QPoint centre = control.mapTo(area->widget(), control.rect().center());
    area->ensureVisible(centre.x(), centre.y(), control.width() / 2 + 1, control.height() / 2 + 1);
    return isInside(*area->viewport(), *area->window()) && isInside(control, *area->viewport());
}

/// What a chooser, stepper or slider is set to.
inline QVariant valueOf(const QWidget &control) {
    if (const auto *chooser = qobject_cast<const QComboBox *>(&control)) {
        return chooser->currentIndex();
    }
    if (const auto *stepper = qobject_cast<const QSpinBox *>(&control)) {
        return stepper->value();
    }
    const auto *slider = qobject_cast<const QSlider *>(&control);
    return slider != nullptr ? slider->value() : QVariant();
}

inline bool isWhole(const QLabel &label) {
    const int height =
        label.hasHeightForWidth() ? label.heightForWidth(label.width()) : label.sizeHint().height();
    return label.height() >= height &&
           (label.wordWrap() || label.width() >= label.sizeHint().width());
}

/// What a button's or chooser's text needs, without the air around it.
inline bool isWhole(const QWidget &control, const QString &text) {
    const QFontMetrics metrics = control.fontMetrics();
    const QSize needed = metrics.size(0, text);
    return control.width() > needed.width() && control.height() >= needed.height();
}

inline int roomForText(const QLineEdit &field) {
    QStyleOptionFrame option;
    option.initFrom(&field);
    constexpr int kInnerMargin = 2;
    return field.style()->subElementRect(QStyle::SE_LineEditContents, &option, &field).width() -
           2 * kInnerMargin;
}

/// A neighbour in the same layout that shares some of its place; null when there is none.
inline const QWidget *overlapping(const QWidget &widget) {
    const QWidget *parent = widget.parentWidget();
    if (parent == nullptr || parent->layout() == nullptr || widget.isWindow()) {
        return nullptr;
    }
    for (const QWidget *other : parent->findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
        if (other != &widget && other->isVisible() && !other->isWindow() && isControl(*other) &&
            (isControl(widget) || qobject_cast<const QLabel *>(&widget) != nullptr) &&
            other->geometry().intersects(widget.geometry())) {
            return other;
        }
    }
    return nullptr;
}

/// Screens of the sizes that $QUORBEL_TEST_SCREENS names, as "1024x768 800x540", side by side.
inline QByteArray screensFile(const testing::TemporaryFolder &folder) {
    QByteArray screens;
    int left = 0;
    for (const QByteArray &size : qgetenv("QUORBEL_TEST_SCREENS").split(' ')) {
        const QList<QByteArray> sides = size.split('x');
        screens += (screens.isEmpty() ? "" : ",") + QByteArray("{\"name\":\"") + size +
                   "\",\"x\":" + QByteArray::number(left) + ",\"y\":0,\"width\":" + sides.at(0) +
                   ",\"height\":" + sides.at(1) + "}";
        left += sides.at(0).toInt();
    }
    return folder.write("screens.json", ("{\"screens\":[" + screens + "]}").toStdString()).c_str();
}

/// Speaks the language that $QUORBEL_TEST_LANGUAGE names: "de", or "long" and "mirrored", which are
/// no real ones.
inline void useLanguage() {
    static testing::PseudoLanguage pseudo;
    const QByteArray language = qgetenv("QUORBEL_TEST_LANGUAGE");
    if (language == "de") {
        useLanguageOf(QLocale(QLocale::German));
    } else if (!language.isEmpty()) {
        QCoreApplication::installTranslator(&pseudo);
        QGuiApplication::setLayoutDirection(language == "mirrored" ? Qt::RightToLeft
                                                                   : Qt::LeftToRight);
    }
}

}  // namespace quorbel
