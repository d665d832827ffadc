#include "support/PseudoLanguage.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringList>
#include <QXmlStreamReader>

#include <algorithm>
#include <array>

namespace quorbel::testing {

namespace {

constexpr std::array<std::pair<char16_t, char16_t>, 12> kAccents{{{u'a', u'à'},
                                                                  {u'e', u'é'},
                                                                  {u'i', u'ì'},
                                                                  {u'o', u'ò'},
                                                                  {u'u', u'ù'},
                                                                  {u'y', u'ý'},
                                                                  {u'A', u'À'},
                                                                  {u'E', u'É'},
                                                                  {u'I', u'Ì'},
                                                                  {u'O', u'Ò'},
                                                                  {u'U', u'Ù'},
                                                                  {u'Y', u'Ý'}}};

bool isForQt(QByteArrayView context) {
    return context.size() > 1 && context[0] == 'Q' && context[1] >= 'A' && context[1] <= 'Z';
}

/// Formats and names of files: no texts.
bool isForPrograms(QByteArrayView context) {
    return context == "Language" || context == "quorbel::TimeTexts";
}

QString accented(QString text) {
    for (QChar &character : text) {
        const auto *accent =
            std::ranges::find(kAccents, character.unicode(), &std::pair<char16_t, char16_t>::first);
        if (accent != kAccents.end()) {
            character = accent->second;
        }
    }
    return text;
}

/// Words that a text of this length is longer by in the language.
QString padding(qsizetype length) {
    QString words;
    while (words.size() < (length + 1) / 2) {
        words += words.size() % 7 == 6 ? u' ' : u'~';
    }
    return words;
}

}  // namespace

PseudoLanguage::PseudoLanguage() {
    QFile file(QStringLiteral(QUORBEL_TRANSLATIONS "/quorbel_de.ts"));
    file.open(QIODevice::ReadOnly);
    QXmlStreamReader xml(&file);
    QString context;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement() && xml.name() == u"name") {
            context = xml.readElementText();
        } else if (xml.isStartElement() && xml.name() == u"source") {
            m_collected.emplace(context, xml.readElementText());
        }
    }
}

QString PseudoLanguage::translate(const char *context, const char *sourceText,
                                  const char * /*disambiguation*/, int /*n*/) const {
    const QString source = QString::fromUtf8(sourceText);
    if (isForQt(context) || isForPrograms(context) ||
        m_collected.count({QString::fromUtf8(context), source}) == 0) {
        return {};
    }
    static const QRegularExpression place(QStringLiteral("(%\\d)"));
    QString text = accented(source);
    text.replace(place, QStringLiteral("]\\1["));
    return u'[' + text + u' ' + padding(source.size()) + u']';
}

QString PseudoLanguage::outside(const QString &shown) {
    QString rest;
    int depth = 0;
    for (const QChar character : shown) {
        depth += character == u'[' ? 1 : 0;
        if (depth == 0) {
            rest += character.isLetter() || character.isDigit() ? character : QChar(u' ');
        }
        depth -= character == u']' && depth > 0 ? 1 : 0;
    }
    return rest.simplified();
}

}  // namespace quorbel::testing
