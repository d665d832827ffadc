#include "platform/gui/Language.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

#include <memory>

namespace quorbel {

namespace {

const QString kOwnLanguage = QStringLiteral("en");

/// "de_AT" of "de-AT".
QString fileSuffix(QString language) {
    return language.replace(u'-', u'_');
}

void install(QTranslator *translator) {
    translator->setParent(QCoreApplication::instance());
    QCoreApplication::installTranslator(translator);
}

bool use(const QString &language) {
    auto own = std::make_unique<QTranslator>();
    if (!own->load(QStringLiteral(":/translations/quorbel_") + language)) {
        return false;
    }
    auto ofQt = std::make_unique<QTranslator>();
    if (ofQt->load(QStringLiteral("qtbase_") + language,
                   QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
        install(ofQt.release());
    }
    install(own.release());
    return true;
}

}  // namespace

void useLanguageOf(const QLocale &locale) {
    const QStringList languages = locale.uiLanguages();
    for (const QString &language : languages) {
        const QString name = fileSuffix(language);
        // Whoever prefers English to German gets English.
        if (name.section(u'_', 0, 0) == kOwnLanguage || name == u"C" || use(name)) {
            return;
        }
    }
}

QString languageInUse() {
    //: The language that these texts are in, as files are named: de, fr, pt_BR. Not shown.
    return QCoreApplication::translate("Language", "en");
}

}  // namespace quorbel
