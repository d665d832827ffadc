#include "BookText.h"

#include <QHash>
#include <QTest>
#include <QTextDocumentFragment>
#include <QXmlStreamReader>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// The window's texts, each with its translations: a word may have several, in several places.
using Terms = QHash<QString, QStringList>;

QString withoutMnemonic(QString text) {
    static const QRegularExpression mnemonic(u"&(?=\\S)"_s);
    return text.remove(mnemonic);
}

/// All forms of a translation, for counts too.
QStringList readForms(QXmlStreamReader &xml) {
    QString whole;
    QStringList forms;
    while (!xml.atEnd() && xml.readNext() != QXmlStreamReader::EndElement) {
        if (xml.isStartElement()) {
            forms += withoutMnemonic(xml.readElementText());
        } else {
            whole += xml.text();
        }
    }
    return forms.isEmpty() ? QStringList{withoutMnemonic(whole)} : forms;
}

Terms readTerms(const QString &language) {
    QFile file(QStringLiteral(QUORBEL_TRANSLATIONS "/quorbel_%1.ts").arg(language));
    Terms terms;
    if (!file.open(QIODevice::ReadOnly)) {
        return terms;
    }
    QXmlStreamReader xml(&file);
    QString source;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement() && xml.name() == u"source") {
            source = withoutMnemonic(xml.readElementText());
        } else if (xml.isStartElement() && xml.name() == u"translation") {
            terms[source] += readForms(xml);
        }
    }
    return terms;
}

QString plain(const QString &html) {
    return QTextDocumentFragment::fromHtml(html).toPlainText().simplified();
}

/// What a chapter sets apart, as it does with the words of the window: quoted, in bold, as a
/// heading, or alone in a cell or an item.
QStringList wordsSetApart(QString html) {
    static const QRegularExpression code(u"<pre>.*?</pre>"_s,
                                         QRegularExpression::DotMatchesEverythingOption);
    html.remove(code);
    QStringList words = found(plain(html), u"[\"„]([^\"“]*)[\"“]"_s);
    for (const char *tag : {"b", "h1", "h2", "th", "td", "li"}) {
        const QString element = u"<%1\\b[^>]*>(.*?)</%1>"_s.arg(QLatin1StringView(tag));
        for (const QString &part : found(html, element)) {
            words += plain(part);
        }
    }
    words.removeDuplicates();
    return words;
}

}  // namespace

/// The book calls things what the window calls them, in each language.
class TranslatedTermsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void namesWhatTheWindowNames_data() {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("name");
        for (const QString &language : bookLanguages()) {
            for (const QString &name : chaptersIn(language)) {
                QTest::newRow(qPrintable(language + u'/' + name)) << language << name;
            }
        }
    }
    void namesWhatTheWindowNames() {
        QFETCH(QString, language);
        QFETCH(QString, name);
        const Terms terms = readTerms(language);
        QVERIFY(!terms.isEmpty());
        const QStringList words = wordsSetApart(contents(u":/help/%1/%2"_s.arg(language, name)));
        for (const QString &word : wordsSetApart(contents(u":/help/"_s + name))) {
            const QStringList translations = terms.value(word);
            const bool isNamed =
                std::any_of(translations.begin(), translations.end(),
                            [&words](const QString &each) { return words.contains(each); });
            QVERIFY2(translations.isEmpty() || isNamed,
                     qPrintable(word + u": "_s + translations.join(u", "_s)));
        }
    }

    void findsWordsInEnglish() {
        const Terms terms = readTerms(u"de"_s);
        qsizetype known = 0;
        for (const QString &name : chaptersIn()) {
            const QStringList words = wordsSetApart(contents(u":/help/"_s + name));
            known += std::count_if(words.begin(), words.end(),
                                   [&terms](const QString &word) { return terms.contains(word); });
        }
        QVERIFY2(known >= 80, qPrintable(QString::number(known)));
    }
};

QTEST_MAIN(TranslatedTermsTest)
#include "TranslatedTermsTest.moc"
