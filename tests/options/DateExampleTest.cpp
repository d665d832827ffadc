#include "options/OptionsFixture.h"
#include "platform/DateFormat.h"
#include "platform/gui/NoteLabel.h"

namespace quorbel {

using namespace testing;
using namespace Qt::StringLiterals;

/// The example beside the formats of dates.
class DateExampleTest : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<OptionsPage> m_page;

    QString example() { return m_page->control<NoteLabel>("dateExample").text(); }
    bool isWarning() {
        return m_page->control("dateExample").property("role").toString() == u"warning"_s;
    }
    /// Whether it shows the present moment, a minute more or less, in this format.
    bool isIn(const char *format) {
        const auto now = static_cast<double>(std::time(nullptr));
        for (int back = 0; back < 60; ++back) {
            const auto date = DateFormat(format).render(now - back);
            if (example() == u"Example: "_s + toQString(date)) {
                return !isWarning();
            }
        }
        return false;
    }

private Q_SLOTS:
    void init() { m_page = std::make_unique<OptionsPage>(); }
    void cleanup() { m_page.reset(); }

    void itFollowsWhatIsChosen() {
        m_page->show();
        QVERIFY2(isIn(""), qPrintable(example()));
        m_page->click("definedDateFormat");
        QVERIFY2(isIn((m_page->chosen("userDateFormat") + u' ' + m_page->chosen("userTimeFormat"))
                          .toUtf8()
                          .constData()),
                 qPrintable(example()));
        m_page->choose("userTimeFormat", "h:mm:ss AM/PM");
        QVERIFY2(
            isIn((m_page->chosen("userDateFormat") + u" h:mm:ss AM/PM"_s).toUtf8().constData()),
            qPrintable(example()));
        QVERIFY(example().endsWith(u'M'));
        m_page->click("localeDateFormat");
        QVERIFY2(isIn(""), qPrintable(example()));
    }

    void itShowsAStoredFormatAsItIs() {
        m_page->show({{"dateFormat", "'week' w"}});
        QVERIFY2(isIn("'week' w"), qPrintable(example()));
        QVERIFY(!m_page->isEnabled("saveButton"));
    }

    void oneThatIsNoneIsSaidToBe() {
        m_page->show({{"dateFormat", "bogus"}});
        QCOMPARE(example(), u"Not a date format: dates would be empty"_s);
        QVERIFY(isWarning());
        m_page->click("localeDateFormat");
        QVERIFY2(isIn(""), qPrintable(example()));
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::DateExampleTest)
#include "DateExampleTest.moc"
