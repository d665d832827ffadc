// Takes the pictures of the windows: quorbel-pictures FOLDER [SUFFIX [NAME...]]
// In the language of the desktop; $QUORBEL_PICTURES_LANGUAGE may say "pseudo", for one made of the
// English texts, half as long again.
//
// Puts the real front-end together over prepared log files and settings, goes to each page and
// sheet through its controls, and saves what the display shows as FOLDER/NAME SUFFIX.png. Needs an
// X display with a window manager; tools/screenshots brings one along.

#include "PictureStage.h"
#include "platform/gui/Appearance.h"
#include "platform/gui/Language.h"
#include "platform/gui/WindowMemory.h"
#include "support/PrivateBus.h"
#include "support/PseudoLanguage.h"
#include "support/StatusStandIn.h"
#include "support/TemporaryFolder.h"

#include <QFile>
#include <QScreen>
#include <QStandardPaths>

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace quorbel {

namespace {

constexpr int kSmallScreen = 1000;  // pixels wide, or less

std::vector<Picture> allPictures() {
    std::vector<Picture> all = pagePictures();
    std::ranges::move(questionPictures(), std::back_inserter(all));
    std::ranges::move(settingsPictures(), std::back_inserter(all));
    std::ranges::move(hostPictures(), std::back_inserter(all));
    return all;
}

void beginAsNewUser() {
    finishRemembering();
    QFile::remove(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                  QStringLiteral("/QuorbelWindow.ini"));
}

bool save(const Picture &picture, testing::ServiceStandIn &service, const QString &file) {
    beginAsNewUser();
    const testing::TemporaryFolder library;
    writeSample(picture.sample, library);
    qputenv("QUORBEL_LIBRARY", library.path().c_str());
    Stage stage(service);
    picture.prepare(stage);
    QWidget *window = Stage::shownWindow(picture.window);
    if (window == nullptr) {
        return false;
    }
    QTest::qWait(kSettleMs);
    const WId shown = picture.isOfSmallScreen ? 0 : window->winId();
    return window->screen()->grabWindow(shown).save(file);
}

/// Of a service that has run for a while.
testing::StatusStandIn::Status sampleStatus() {
    return {.counters = {{"received", 1'385'012},
                         {"malformed", 31},
                         {"stored", 1'384'772},
                         {"not stored", 0},
                         {"dropped", 0},
                         {"notifications dropped", 0},
                         {"connections closed", 1},
                         {"TLS refused", 4},
                         {"filtered", 212},
                         {"removed", 90'210},
                         {"e-mails sent", 12}},
            .listeners = {{"udp", 514}, {"tcp", 514}, {"tls", 6514}},
            .refusals = {{"10.0.0.31", "filtered", "\"Printers\"", 1'795'257'600, 205},
                         {"10.0.4.7", "wrong port", "\"no TLS\"", 1'795'257'412, 4},
                         {"10.0.0.31", "malformed", "\"toner low\"", 1'795'251'008, 31},
                         {"192.0.2.44", "filtered", "", 1'795'249'125, 7}},
            .actions = {{"Page the operator", 12, 1'795'256'112, 1,
                         "The mail server does not answer", 1'795'170'030},
                        {"Failed logins", 3, 1'795'240'007, 0}},
            .exports = {{"text", 288, 1'795'257'000, 0}, {"database", 288, 1'795'257'000, 0}}};
}

int run(const QStringList &arguments) {
    const QString folder = arguments.value(1);
    const QString suffix = arguments.value(2);
    const QStringList wanted = arguments.mid(3);
    const testing::PrivateBus bus;
    testing::ServiceStandIn service;
    const testing::StatusStandIn::Status status = sampleStatus();
    service.run([&status](sd_bus *connection) { testing::serveStatus(connection, status); });
    const bool isSmall = QGuiApplication::primaryScreen()->size().width() <= kSmallScreen;
    bool all = true;
    for (const Picture &picture : allPictures()) {
        const QString name = QLatin1String(picture.name);
        if (picture.isOfSmallScreen != isSmall) {
            continue;
        }
        if (!wanted.isEmpty() && !wanted.contains(name)) {
            continue;
        }
        if (!save(picture, service,
                  folder + QLatin1Char('/') + name + suffix + QStringLiteral(".png"))) {
            std::fprintf(stderr, "%s could not be taken\n", picture.name);
            all = false;
        }
    }
    return all ? 0 : 1;
}

}  // namespace

}  // namespace quorbel

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Quorbel"));
    QApplication::setApplicationVersion(QStringLiteral(QUORBEL_VERSION));
    QApplication::setQuitOnLastWindowClosed(false);
    if (qEnvironmentVariable("QUORBEL_PICTURES_LANGUAGE") == u"pseudo") {
        static quorbel::testing::PseudoLanguage pseudo;
        QCoreApplication::installTranslator(&pseudo);
    } else {
        quorbel::useLanguageOf(QLocale::system());
    }
    quorbel::applyAppearance(application);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s FOLDER [SUFFIX [NAME...]]\n", argv[0]);
        return 2;
    }
    return quorbel::run(QApplication::arguments());
}
