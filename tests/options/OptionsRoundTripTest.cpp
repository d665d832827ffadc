#include "common/SettingsDocument.h"
#include "core/AppDelegate.h"
#include "options/ToolsViewFilter.h"
#include "options/ToolsViewOptions.h"
#include "platform/KeyedArchive.h"
#include "platform/gui/QtText.h"
#include "platform/gui/Storyboard.h"
#include "support/PrivateBus.h"
#include "support/ServiceProcess.h"
#include "support/TemporaryFolder.h"
#include "support/ValueText.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <plist/plist.h>

#include <fstream>
#include <map>
#include <sstream>

namespace quorbel {

using namespace testing;

namespace {

/// What libplist, which knows nothing of our code, makes of the settings document: each key with
/// its value as text, of arrays their size.
class StoredDocument {
public:
    explicit StoredDocument(const std::string &bytes) {
        plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &m_top);
        plist_t root = target(plist_dict_get_item(plist_dict_get_item(m_top, "$top"), "root"));
        plist_t keys = plist_dict_get_item(root, "NS.keys");
        plist_t objects = plist_dict_get_item(root, "NS.objects");
        for (std::uint32_t i = 0; i < plist_array_get_size(keys); ++i) {
            m_values[textOf(target(plist_array_get_item(keys, i)))] =
                textOf(target(plist_array_get_item(objects, i)));
        }
    }
    ~StoredDocument() { plist_free(m_top); }
    StoredDocument(const StoredDocument &) = delete;
    StoredDocument &operator=(const StoredDocument &) = delete;

    QString at(const std::string &key) { return toQString(m_values[key]); }
    [[nodiscard]] std::size_t size() const { return m_values.size(); }

private:
    [[nodiscard]] plist_t target(plist_t reference) const {
        std::uint64_t number = 0;
        plist_get_uid_val(reference, &number);
        return plist_array_get_item(plist_dict_get_item(m_top, "$objects"),
                                    static_cast<std::uint32_t>(number));
    }
    static std::string textOf(plist_t node) {
        if (plist_get_node_type(node) == PLIST_STRING) {
            return plist_get_string_ptr(node, nullptr);
        }
        if (plist_get_node_type(node) == PLIST_BOOLEAN) {
            std::uint8_t flag = 0;
            plist_get_bool_val(node, &flag);
            return flag != 0 ? "true" : "false";
        }
        if (plist_get_node_type(node) == PLIST_UINT) {
            std::uint64_t number = 0;
            plist_get_uint_val(node, &number);
            return std::to_string(static_cast<std::int64_t>(number));
        }
        return std::to_string(plist_array_get_size(plist_dict_get_item(node, "NS.objects"))) +
               " elements";
    }

    plist_t m_top = nullptr;
    std::map<std::string, std::string> m_values;
};

}  // namespace

/// The page with the real service: what is saved is stored, and shown again.
class OptionsRoundTripTest : public QObject {
    Q_OBJECT

private:
    [[nodiscard]] std::string document() const {
        std::ifstream file(m_library.path() / kSettingsFileName, std::ios::binary);
        std::ostringstream bytes;
        bytes << file.rdbuf();
        return bytes.str();
    }
    void show() {
        m_page->hide();
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
    }
    void saveAndWait() {
        const std::string before = document();
        click("saveButton");
        QVERIFY(waitUntil([&] { return document() != before; }));
    }
    template <class Control>
    Control *control(const char *name) {
        return m_page->findChild<Control *>(QLatin1String(name));
    }
    void click(const char *name) {
        auto *button = control<QAbstractButton>(name);
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    }

    TemporaryFolder m_library;
    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<ServiceProcess> m_service;
    std::unique_ptr<AppDelegate> m_delegate;
    Storyboard m_storyboard;
    std::unique_ptr<ToolsViewOptions> m_page;

private Q_SLOTS:
    void initTestCase() {
        qputenv("QUORBEL_LIBRARY", QByteArray::fromStdString(m_library.path().string()));
        m_library.write(kSettingsFileName,
                        writeKeyedArchive(Dictionary{{"actionsEmailPort", 2525},
                                                     {"removalError", 12},
                                                     {"removalErrorUnits", 1},
                                                     {"popupSound", "/s/ä.aiff"}}));
        m_bus = std::make_unique<PrivateBus>();
        ServiceProcess::Setup setup;
        setup.library = m_library.path();
        setup.busAddress = m_bus->address();
        m_service = std::make_unique<ServiceProcess>(setup);
        QVERIFY(m_service->isListening());
        // A command that comes earlier is refused, and not sent again.
        QVERIFY2(m_service->waitForJournal("Connected to the system bus"),
                 m_service->journal().c_str());
        m_delegate = std::make_unique<AppDelegate>();
        m_storyboard.add(QStringLiteral("filterView"),
                         [] { return std::make_unique<ToolsViewFilter>(); });
        m_page = std::make_unique<ToolsViewOptions>(*m_delegate, m_storyboard);
        m_page->viewDidLoad();
    }
    void cleanupTestCase() {
        m_page.reset();
        m_delegate.reset();
        m_service.reset();
        m_bus.reset();
        qunsetenv("QUORBEL_LIBRARY");
    }

    void whatIsSavedIsStoredAndShownAgain() {
        show();
        click("hostsDisplayName");
        click("definedDateFormat");
        click("removalDebug");
        click("popupEventsDisplay");
        click("popupDebugDisplay");
        saveAndWait();

        StoredDocument stored(document());
        QCOMPARE(stored.size(), std::size_t{36});
        QCOMPARE(stored.at("actionsEmailPort"), QStringLiteral("2525"));
        QCOMPARE(stored.at("hostsDisplay"), QStringLiteral("true"));
        QCOMPARE(stored.at("dateFormat"), QStringLiteral("yyyy-MM-dd HH:mm:ss"));
        QCOMPARE(stored.at("severityEmergency"), QStringLiteral("0"));
        QCOMPARE(stored.at("removalError"), QStringLiteral("12"));
        QCOMPARE(stored.at("removalErrorUnits"), QStringLiteral("1"));
        QCOMPARE(stored.at("removalDebug"), QStringLiteral("1"));
        QCOMPARE(stored.at("removalDebugUnits"), QStringLiteral("0"));
        QCOMPARE(stored.at("removalNotice"), QStringLiteral("0"));
        QCOMPARE(stored.at("removalNoticeUnits"), QStringLiteral("-1"));
        QCOMPARE(stored.at("popupEvents"), QStringLiteral("10"));
        QCOMPARE(stored.at("popupSound"), QStringLiteral("/s/ä.aiff"));
        QCOMPARE(stored.at("popupDisplayArray"), QStringLiteral("8 elements"));
        QCOMPARE(stored.at("excludeFiltersArray"), QStringLiteral("0 elements"));

        show();
        QVERIFY(control<QAbstractButton>("hostsDisplayName")->isChecked());
        QCOMPARE(control<QComboBox>("userTimeFormat")->currentText(), QStringLiteral("HH:mm:ss"));
        QCOMPARE(control<QLineEdit>("removalErrorTime")->text(), QStringLiteral("12"));
        QCOMPARE(control<QComboBox>("removalDebugUnits")->currentIndex(), 0);
        QVERIFY(!control<QCheckBox>("removalNotice")->isChecked());
        QVERIFY(!control<QCheckBox>("popupDebugDisplay")->isChecked());
        QVERIFY(control<QCheckBox>("popupUnknownDisplay")->isChecked());
        QCOMPARE(control<QLineEdit>("popupSoundFile")->text(), QStringLiteral("/s/ä.aiff"));
    }

    void filtersAreStoredInTheirOrder() {
        show();
        for (const char *name : {"b", "a", "b"}) {
            click("excludeFiltersAdd");
            QTRY_VERIFY(m_page->findChild<Sheet *>() != nullptr);
            auto *field = control<QLineEdit>("filterName");
            field->selectAll();
            QTest::keyClicks(field, QLatin1String(name));
            QTest::mouseClick(control<QAbstractButton>("onSave"), Qt::LeftButton);
            QTRY_VERIFY(m_page->findChild<Sheet *>() == nullptr);
        }
        saveAndWait();
        const auto stored = decodeSettings(document());
        QVERIFY(stored.has_value());
        QCOMPARE(toQString(textOf(*stored->find("excludeFiltersArray"))),
                 QStringLiteral("[%1b%2, %1a%2, %1b%2]")
                     .arg(QStringLiteral("{\"Name\": \""),
                          QStringLiteral("\", \"IP\": \"0.0.0.0\", \"Message\": \"*\", "
                                         "\"Mask\": \"0\", \"Facility\": \"Any\", "
                                         "\"Severity\": \"Any\"}")));
        QCOMPARE(stored->find("includeFiltersArray")->array()->size(), std::size_t{0});
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::OptionsRoundTripTest)
#include "OptionsRoundTripTest.moc"
#include "common/SettingsDocument.h"
