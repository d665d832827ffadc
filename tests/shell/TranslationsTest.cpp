#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTest>
#include <QXmlStreamReader>

using namespace Qt::StringLiterals;

namespace {

/// A text in English with its forms in another language.
struct Text {
    QString context;
    QString source;
    QStringList translations;
    QString state;  ///< "unfinished", "vanished", "obsolete"; empty for one that is done
};

QList<Text> textsOf(QFile &file) {
    QList<Text> texts;
    QXmlStreamReader xml(&file);
    QString context;
    while (xml.readNextStartElement() || !xml.atEnd()) {
        if (!xml.isStartElement()) {
            continue;
        }
        if (xml.name() == u"name") {
            context = xml.readElementText();
        } else if (xml.name() == u"source") {
            texts.append({context, xml.readElementText(), {}, {}});
        } else if (xml.name() == u"translation") {
            texts.last().state = xml.attributes().value("type"_L1).toString();
            const QString all = xml.readElementText(QXmlStreamReader::IncludeChildElements);
            texts.last().translations += all;
        }
    }
    return texts;
}

/// What a translation must have as often as its source, or as often as it has forms.
QStringList placesIn(const QString &text) {
    static const QRegularExpression place(u"%\\d|\\$\\w+|<[^>]*>"_s);
    QStringList places;
    for (auto match = place.globalMatch(text); match.hasNext();) {
        places += match.next().captured();
    }
    places.removeDuplicates();
    places.sort();
    return places;
}

bool hasMnemonic(const QString &text) {
    static const QRegularExpression mnemonic(u"&[^&\\s]"_s);
    return text.contains(mnemonic);
}

}  // namespace

/// What can be said of a translation without knowing the language.
class TranslationsTest : public QObject {
    Q_OBJECT

private:
    static void addTexts() {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("translation");
        QTest::addColumn<QString>("state");
        const QDir folder(QStringLiteral(QUORBEL_TRANSLATIONS));
        for (const QString &name : folder.entryList({u"quorbel_*.ts"_s})) {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QIODevice::ReadOnly));
            for (const Text &text : textsOf(file)) {
                for (const QString &translation : text.translations) {
                    QTest::newRow(qPrintable(name + u' ' + text.context + u": "_s + text.source))
                        << text.source << translation << text.state;
                }
            }
        }
    }

private Q_SLOTS:
    void isWhole_data() { addTexts(); }
    void isWhole() {
        QFETCH(QString, source);
        QFETCH(QString, translation);
        QFETCH(QString, state);
        QCOMPARE(state, QString());
        QVERIFY(!translation.trimmed().isEmpty());
        QCOMPARE(placesIn(translation), placesIn(source));
        QCOMPARE(hasMnemonic(translation), hasMnemonic(source));
        QCOMPARE(translation.trimmed().endsWith(u"..."), source.endsWith(u"..."));
        QCOMPARE(translation.trimmed().endsWith(u':'), source.endsWith(u':'));
        QCOMPARE(translation.startsWith(u' '), source.startsWith(u' '));
    }
};

QTEST_GUILESS_MAIN(TranslationsTest)
#include "TranslationsTest.moc"
