#include "settings/Recount.h"

#include <QTest>
#include <QTimer>

#include <chrono>
#include <ctime>
#include <functional>
#include <string>
#include <thread>

namespace quorbel {

namespace {

/// Takes a whole slice for each run of events.
class SlowPass : public EventPass {
public:
    explicit SlowPass(EventList &list) : EventPass(list) {}

    std::size_t seen = 0;
    std::function<void()> whenLooking;

private:
    void clear() override { seen = 0; }
    void look(EventChunk & /*chunk*/, std::size_t first, std::size_t last) override {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        seen += last - first;
        if (whenLooking) {
            whenLooking();
        }
    }
};

double processorSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

}  // namespace

class RecountTest : public QObject {
    Q_OBJECT

private:
    void insert(int count) {
        for (int i = 0; i < count; ++i) {
            m_list->insertRaw({"1700000000", "Local7.Error", "h", "m", {}});
        }
    }
    void begin() {
        m_pass = std::make_unique<SlowPass>(*m_list);
        m_recount = std::make_unique<Recount>(*m_pass, *m_form);
        connect(m_recount.get(), &Recount::due, m_form.get(), [this] {
            ++m_starts;
            m_pass->restart();
        });
        connect(m_recount.get(), &Recount::counted, m_form.get(), [this] { ++m_ends; });
        m_recount->begin();
    }

    std::unique_ptr<EventList> m_list;
    std::unique_ptr<QWidget> m_form;
    std::unique_ptr<SlowPass> m_pass;
    std::unique_ptr<Recount> m_recount;
    int m_starts = 0;
    int m_ends = 0;

private Q_SLOTS:
    void init() {
        m_list = std::make_unique<EventList>();
        m_form = std::make_unique<QWidget>();
        m_form->show();
        m_starts = 0;
        m_ends = 0;
    }
    void cleanup() {
        m_recount.reset();
        m_pass.reset();
        m_form.reset();
        m_list.reset();
    }

    void manyThatComeAtOnceAreCountedWithoutAPause() {
        insert(10);
        begin();
        QTRY_COMPARE(m_ends, 1);
        insert(256 * 40);  // forty slices
        QTRY_COMPARE_WITH_TIMEOUT(m_pass->seen, std::size_t{10 + 256 * 40}, 20'000);
        QCOMPARE(m_starts, 1);
    }

    void itRestsBetweenTwoCountsThatRemovalsSpoil() {
        insert(256 * 10);
        begin();
        QTRY_COMPARE(m_ends, 1);
        m_pass->whenLooking = [this] {
            QTimer::singleShot(0, m_form.get(), [this] { m_list->removeRows({{0, 1}}); });
        };
        m_list->removeRows({{0, 1}});
        QTRY_COMPARE_WITH_TIMEOUT(m_starts, 2, 20'000);
        QTRY_VERIFY(m_pass->isStale());
        const double before = processorSeconds();
        QTest::qWait(2000);
        const double used = processorSeconds() - before;
        QVERIFY2(used < 0.3, qPrintable(QString::number(used)));
        m_pass->whenLooking = nullptr;
        QTRY_COMPARE_WITH_TIMEOUT(m_ends, 2, 20'000);
        QCOMPARE(m_pass->seen, m_list->size());
    }
};

}  // namespace quorbel

QTEST_MAIN(quorbel::RecountTest)
#include "RecountTest.moc"
