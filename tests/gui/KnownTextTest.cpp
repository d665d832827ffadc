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
        add("No mail server is set", "[No mail server is set]");
        add("The sender \"x\" is not a valid e-mail address",
            "[The sender \"x\" is not a valid e-mail address]");
        add("\"x\" is not a valid e-mail address; \"y\" is not a valid e-mail address",
            "[\"x\" is not a valid e-mail address]; [\"y\" is not a valid e-mail address]");
        add("The mail server's connection security \"TLS\" is not one of \"None\", \"STARTTLS\" or "
            "\"SSL/TLS\"",
            "[The mail server's connection security \"TLS\" is not one of \"None\", \"STARTTLS\" "
            "or "
            "\"SSL/TLS\"]");
        add("No connection security is chosen for the mail server; the password is sent without "
            "encryption only with \"None\"",
            "[No connection security is chosen for the mail server]; [the password is sent without "
            "encryption only with \"None\"]");
        add("The mail server m.example cannot be reached on port 25",
            "[The mail server m.example cannot be reached on port 25]");
        add("The mail server m.example refused all recipients: 550 5.1.1 No such user; sorry",
            "[The mail server m.example refused all recipients: 550 5.1.1 No such user]; sorry");
        add("The mail server m.example refused the e-mail",
            "[The mail server m.example refused the e-mail]");
        add("The mail server refused a@b.example (550 5.1.1 No), c@b.example (450 Later)",
            "[The mail server refused a@b.example (550 5.1.1 No), c@b.example (450 Later)]");
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
