#include "platform/gui/KnownText.h"

#include <QCoreApplication>
#include <QTest>
#include <QTranslator>

using namespace quorbel;

/// Puts what it is asked for in brackets, places and all.
class Brackets : public QTranslator {
public:
    [[nodiscard]] QString translate(const char *context, const char *sourceText,
                                    const char * /*disambiguation*/, int /*n*/) const override {
        return QByteArrayView(context) == "KnownText"
                   ? QStringLiteral("[%1]").arg(QString::fromUtf8(sourceText))
                   : QString();
    }
    [[nodiscard]] bool isEmpty() const override { return false; }
};

class KnownTextTest : public QObject {
    Q_OBJECT

private:
    static void addProblems() {
        QTest::addColumn<QString>("problem");
        QTest::addColumn<QString>("shown");
        const auto add = [](const char *problem, const char *shown) {
            QTest::newRow(problem) << QString::fromUtf8(problem) << QString::fromUtf8(shown);
        };
        add("the file is too large", "[the file is too large]");
        add("There is a filter \"Disk %2\" already", "[There is a filter \"Disk %2\" already]");
        add("/home/a/x.txt, line 3: \"colour\" is not known",
            "[/home/a/x.txt, line 3: [\"colour\" is not known]]");
        add("2 of 3 events could not be put back: 1 cannot stand in a log file; they are of too "
            "many days",
            "[2 of 3 events could not be put back: [1 cannot stand in a log file]]; [they are of "
            "too many days]");
        add("missing ): (a", "[missing ): (a]");
        add("trailing \\: a\\", "[trailing \\: a\\]");
        add("Something else: the file is too large", "Something else: the file is too large");
        add("", "");
    }

    Brackets m_brackets;

private Q_SLOTS:
    void cleanup() { QCoreApplication::removeTranslator(&m_brackets); }

    void knowsProblems_data() { addProblems(); }
    void knowsProblems() {
        QFETCH(QString, problem);
        QFETCH(QString, shown);
        QCOMPARE(knownProblem(problem), problem);  // in English
        QCoreApplication::installTranslator(&m_brackets);
        QCOMPARE(knownProblem(problem), shown);
    }
};

QTEST_GUILESS_MAIN(KnownTextTest)
#include "KnownTextTest.moc"
