#include "options/OptionsFixture.h"

#include <algorithm>
#include <random>

namespace quorbel {

using namespace testing;

namespace {

const std::array kDates{"yyyy-MM-dd", "dd/MM/yyyy", "MM/dd/yyyy", "dd.MM.yyyy", "d/M/yy"};
const std::array kTimes{"HH:mm:ss", "HH:mm", "hh:mm:ss AM/PM", "h:mm:ss AM/PM", "hh:mm AM/PM"};
const std::array kUnits{"Minutes", "Hours", "Days", "Weeks", "Months"};
const std::array kLevels{"Normal", "Moderate", "Severe"};

/// One of the two lists of labels, with what switches it on.
struct Alert {
    bool isOn = false;
    std::vector<std::string> labels;

    void toggle() {
        isOn = !isOn;
        labels.clear();
        if (isOn) {
            labels.assign(kLabels.begin(), kLabels.end());
        }
    }
    void toggleLabel(const char *label) {
        if (std::erase(labels, label) == 0) {
            labels.emplace_back(label);
        }
    }
};

/// What the page holds, worked out from what was clicked and typed.
struct Model {
    bool byName = false;
    bool isDefined = false;
    std::size_t date = 0;
    std::size_t time = 0;
    std::array<int, 9> levels{2, 2, 2, 1, 1, 1, 0, 0, 0};
    std::array<bool, 9> isRemoved{};
    std::array<int, 9> amounts{};
    std::array<int, 9> units{};
    Alert popups;
    int seconds = 0;
    Alert sound;
    std::optional<std::string> path;
    std::string shownPath;  ///< the field empties when sound is switched off, the path stays

    Model() {
        isRemoved.fill(true);
        amounts.fill(30);
        units.fill(2);
    }
    /// What is read back from what was saved: content stands for what is switched on.
    void reload() {
        for (std::size_t i = 0; i < amounts.size(); ++i) {
            isRemoved[i] = amounts[i] != 0;
        }
        const auto switchOn = [](Alert &alert, bool isOn) {
            alert.isOn = isOn;
            if (!isOn) {
                alert.labels.clear();
            }
        };
        switchOn(popups, seconds != 0);
        switchOn(sound, path && !path->empty());
        shownPath = path.value_or(std::string());
    }
    [[nodiscard]] Dictionary document() const {
        Dictionary document{
            {"hostsDisplay", byName},
            {"dateFormat", isDefined ? std::string(kDates[date]) + ' ' + kTimes[time] : ""},
            {"popupEvents", seconds},
            {"popupDisplayArray", Array(popups.labels.begin(), popups.labels.end())},
            {"popupPlayArray", Array(sound.labels.begin(), sound.labels.end())},
            {"includeFiltersArray", Array{}},
            {"excludeFiltersArray", Array{}}};
        for (std::size_t i = 0; i < kParts.size(); ++i) {
            document.set(named("severity", kParts[i]), levels[i]);
            document.set(named("removal", kParts[i]), amounts[i]);
            document.set(named("removal", kParts[i], "Units"), isRemoved[i] ? units[i] : -1);
        }
        if (path) {
            document.set("popupSound", *path);
        }
        return document;
    }
};

}  // namespace

/// Random work on the page against a plain model of it.
class OptionsModelTest : public QObject {
    Q_OBJECT

private:
    int random(int end) { return std::uniform_int_distribution(0, end - 1)(m_random); }
    std::size_t place(std::size_t end) { return static_cast<std::size_t>(random(int(end))); }
    int type(const std::string &field, int end) {
        const int value = random(4) == 0 ? 0 : random(end);
        m->type(field.c_str(), QString::number(value));
        return value;
    }

    void workOnHostsAndDates() {
        switch (random(5)) {
            case 0:
                m_model.byName = random(2) == 0;
                m->click(m_model.byName ? "hostsDisplayName" : "hostsDisplayIP");
                break;
            case 1:
                m_model.isDefined = false;
                m->click("localeDateFormat");
                break;
            case 2:
                m_model.isDefined = true;
                m_model.date = m_model.time = 0;
                m->click("definedDateFormat");
                break;
            default:
                if (m_model.isDefined) {
                    m_model.date = place(kDates.size());
                    m_model.time = place(kTimes.size());
                    m->choose("userDateFormat", kDates[m_model.date]);
                    m->choose("userTimeFormat", kTimes[m_model.time]);
                }
        }
    }

    void workOnRetention() {
        const std::size_t i = place(kParts.size());
        const std::string box = named("removal", kParts[i]);
        const int work = random(4);
        if (work == 0) {
            m->click(box.c_str());
            m_model.isRemoved[i] = !m_model.isRemoved[i];
            m_model.amounts[i] = m_model.isRemoved[i] ? 1 : 0;
            m_model.units[i] = 0;
        } else if (m_model.isRemoved[i] && work == 1) {
            m_model.amounts[i] = type(box + "Time", 10000);
        } else if (m_model.isRemoved[i] && work == 2) {
            m_model.amounts[i] = std::max(0, m_model.amounts[i] - 1);
            QTest::keyClick(&m->control((box + "Stepper").c_str()), Qt::Key_Down);
        } else if (m_model.isRemoved[i]) {
            m_model.units[i] = random(5);
            m->choose((box + "Units").c_str(), kUnits[static_cast<std::size_t>(m_model.units[i])]);
        }
    }

    void workOnLabels(Alert &alert, const char *list) {
        const std::size_t i = place(kParts.size());
        m->click(named("popup", kParts[i], list).c_str());
        if (alert.isOn) {
            alert.toggleLabel(kLabels[i]);
        }
    }

    void workOnAlerts() {
        switch (random(8)) {
            case 0:
                m->click("popupEventsDisplay");
                m_model.popups.toggle();
                m_model.seconds = m_model.popups.isOn ? 10 : 0;
                break;
            case 1:
                m->click("popupEventsPlay");
                m_model.sound.toggle();
                if (!m_model.sound.isOn) {
                    m_model.shownPath.clear();
                }
                break;
            case 2:
                if (m_model.popups.isOn) {
                    // "0" cannot be typed: the field is empty then, which is treated as 0.
                    m_model.seconds = type("popupEventsTime", 3601);
                }
                break;
            case 3:
                if (m_model.sound.isOn) {
                    const std::string path =
                        random(3) == 0 ? "" : "/s/" + std::to_string(random(100));
                    m->type("popupSoundFile", toQString(path));
                    if (!path.empty() || !m_model.shownPath.empty()) {
                        m_model.path = path;  // emptying an empty field is no edit
                    }
                    m_model.shownPath = path;
                }
                break;
            case 4:
            case 5:
                workOnLabels(m_model.popups, "Display");
                break;
            default:
                workOnLabels(m_model.sound, "Play");
        }
    }

    void work() {
        const int part = random(10);
        if (part == 0) {
            workOnHostsAndDates();
        } else if (part == 1) {
            const std::size_t i = place(kParts.size());
            m_model.levels[i] = random(3);
            m->choose(named("severity", kParts[i]).c_str(),
                      kLevels[static_cast<std::size_t>(m_model.levels[i])]);
        } else if (part < 6) {
            workOnRetention();
        } else {
            workOnAlerts();
        }
    }

    QString shown(const Alert &alert) {
        QString boxes;
        for (const char *label : kLabels) {
            const bool isChecked = std::ranges::find(alert.labels, label) != alert.labels.end();
            boxes += alert.isOn ? (isChecked ? u'X' : u'O') : u'o';
        }
        return boxes;
    }
    void verifyControls() {
        QCOMPARE(m->isEnabled("userTimeFormat"), m_model.isDefined);
        for (std::size_t i = 0; i < kParts.size(); ++i) {
            const std::string box = named("removal", kParts[i]);
            QCOMPARE(m->isChecked(box.c_str()), m_model.isRemoved[i]);
            QCOMPARE(m->isEnabled((box + "Time").c_str()), m_model.isRemoved[i]);
            QCOMPARE(m->text((box + "Time").c_str()),
                     m_model.isRemoved[i] ? QString::number(m_model.amounts[i]) : QString());
            QCOMPARE(m->index(box + "Units"), m_model.isRemoved[i] ? m_model.units[i] : -1);
        }
        QCOMPARE(m->isChecked("popupEventsDisplay"), m_model.popups.isOn);
        QCOMPARE(m->text("popupEventsTime"),
                 m_model.seconds != 0 ? QString::number(m_model.seconds) : QString());
        QCOMPARE(m->boxes("Display"), shown(m_model.popups));
        QCOMPARE(m->isChecked("popupEventsPlay"), m_model.sound.isOn);
        QCOMPARE(m->boxes("Play"), shown(m_model.sound));
        QCOMPARE(m->text("popupSoundFile"), toQString(m_model.shownPath));
    }

    std::mt19937 m_random;
    Model m_model;
    std::unique_ptr<OptionsPage> m;

private Q_SLOTS:
    void init() { m = std::make_unique<OptionsPage>(); }
    void cleanup() { m.reset(); }

    void thePageDoesAsTheModel_data() {
        QTest::addColumn<unsigned>("seed");
        for (unsigned seed = 1; seed <= 8; ++seed) {
            QTest::addRow("seed %u", seed) << seed;
        }
    }
    void thePageDoesAsTheModel() {
        QFETCH(unsigned, seed);
        m_random.seed(seed);
        m_model = Model();
        m->show();
        for (int round = 0; round < 6; ++round) {
            for (int i = 0; i < 40; ++i) {
                work();
            }
            verifyControls();
            if (QTest::currentTestFailed()) {
                return;
            }
            const Dictionary sent = m->saveUntouched();
            const Dictionary expected = m_model.document();
            for (const auto &[key, value] : expected) {
                QCOMPARE(at(sent, key), toQString(textOf(value)));
            }
            QCOMPARE(sent.size(), expected.size());
            m->show(sent);
            m_model.reload();
            verifyControls();
            if (QTest::currentTestFailed()) {
                return;
            }
        }
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::OptionsModelTest)
#include "OptionsModelTest.moc"
