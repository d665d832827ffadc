#pragma once

#include <QLocale>
#include <QString>

namespace quorbel {

/// Has the window speak the first of the user's languages that there is, and Qt with it; English,
/// which needs nothing, where there is none. To be called once, before anything is made that has
/// texts. Numbers and dates follow QLocale(), whatever the language.
void useLanguageOf(const QLocale &locale);

/// The language in use, as files are named: "de"; "en" where nothing was translated.
QString languageInUse();

}  // namespace quorbel
