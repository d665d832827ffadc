#pragma once

#include "SampleLibrary.h"
#include "support/FrontEnd.h"
#include "support/ServiceStandIn.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QTableView>
#include <QTest>

#include <functional>
#include <vector>

namespace quorbel {

/// How long the window has to show what a hand has done, in milliseconds.
inline constexpr int kSettleMs = 400;

/// The real front-end, with the hands that bring it to what a picture is to show.
class Stage : public testing::FrontEnd {
public:
    explicit Stage(testing::ServiceStandIn &service) : m_service(service) {
        QTest::qWait(kSettleMs);
    }

    void click(const char *name) const {
        QTest::mouseClick(&control<QAbstractButton>(name), Qt::LeftButton);
        QTest::qWait(kSettleMs);
    }
    void clickRow(const char *page, const char *table, int row, int column = 0,
                  bool twice = false) const {
        auto &view = *control<QWidget>(page).findChild<QTableView *>(QLatin1String(table));
        const QPoint point = view.visualRect(view.model()->index(row, column)).center();
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, point);
        if (twice) {
            QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, point);
        }
        QTest::qWait(kSettleMs);
    }
    void clickIn(const char *container, const char *name) const {
        auto &place = control<QWidget>(container);
        QTest::mouseClick(place.findChild<QAbstractButton *>(QLatin1String(name)), Qt::LeftButton);
        QTest::qWait(kSettleMs);
    }
    /// Chooses the item with the arrow keys, from a list without a choice or on its first item.
    void choose(const char *name, int item) const {
        auto &list = control<QComboBox>(name);
        while (list.currentIndex() < item) {
            QTest::keyClick(&list, Qt::Key_Down);
        }
    }
    /// Scrolls so far down that the control is in sight.
    void scrollTo(const char *area, const char *name) const {
        control<QScrollArea>(area).verticalScrollBar()->setValue(
            control<QWidget>(name).mapTo(control<QScrollArea>(area).widget(), QPoint()).y() - 12);
        QTest::qWait(kSettleMs);
    }
    void type(const char *field, const char *text) const {
        auto &line = control<QLineEdit>(field);
        line.setFocus();
        QTest::keyClicks(&line, QString::fromUtf8(text));
        QTest::qWait(kSettleMs);
    }
    void press(const char *name, Qt::Key key) const {
        QTest::keyClick(&control<QWidget>(name), key);
        QTest::qWait(kSettleMs);
    }
    void notify(const testing::ServiceStandIn::UserInfo &event) const { m_service.notify(event); }

    /// The visible window of this name; null when it does not appear.
    static QWidget *shownWindow(const char *name) {
        QElapsedTimer waited;
        waited.start();
        while (waited.elapsed() < 10'000) {
            for (QWidget *window : QApplication::topLevelWidgets()) {
                if (window->objectName() == QLatin1String(name) && window->isVisible()) {
                    return window;
                }
            }
            QTest::qWait(20);
        }
        return nullptr;
    }

private:
    testing::ServiceStandIn &m_service;
};

struct Picture {
    const char *name;
    Sample sample;
    const char *window;  ///< whose window is shown
    std::function<void(Stage &)> prepare;
    bool isOfSmallScreen = false;  ///< all of such a screen, on which the others are not taken
};

/// Those of the pages, the events' sheets and the popups.
std::vector<Picture> pagePictures();
/// Those of the questions and marks of the events page.
std::vector<Picture> questionPictures();
/// Those of the hosts.
std::vector<Picture> hostPictures();
/// Those of the settings pages and their sheets.
std::vector<Picture> settingsPictures();

}  // namespace quorbel
