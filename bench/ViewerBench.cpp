// The window as one of bench/peers: bench_viewer LIBRARY TEXT BEGUN, on a display. LIBRARY holds
// the log files, TEXT stands in one of the events, BEGUN is the time of CLOCK_MONOTONIC in seconds
// at which the process was started. Prints seconds and bytes, one a line, as NAME VALUE.

#include "Measure.h"
#include "events/EventTableView.h"
#include "platform/gui/Appearance.h"
#include "support/FrontEnd.h"

#include <QAbstractItemDelegate>
#include <QApplication>
#include <QLineEdit>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

namespace quorbel::bench {
namespace {

/// Notes how many rows were painted, and whether one of them has a text.
class PaintWitness : public QAbstractItemDelegate {
public:
    PaintWitness(QAbstractItemDelegate &inner, QString text)
        : m_inner(inner), m_text(std::move(text)) {}

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override {
        m_inner.paint(painter, option, index);
        ++m_painted;
        m_hasText = m_hasText || index.data().toString().contains(m_text);
    }
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem &option,
                                 const QModelIndex &index) const override {
        return m_inner.sizeHint(option, index);
    }
    [[nodiscard]] int painted() const { return m_painted; }
    [[nodiscard]] bool hasText() const { return m_hasText; }
    void forget() { m_hasText = false; }

private:
    QAbstractItemDelegate &m_inner;
    const QString m_text;
    mutable int m_painted = 0;
    mutable bool m_hasText = false;
};

double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void tell(const char *name, double value) {
    std::printf("%s %.4f\n", name, value);
}

void waitFor(const std::function<bool()> &condition) {
    const double end = now() + 120;
    while (!condition()) {
        QApplication::processEvents(QEventLoop::AllEvents, 20);
        if (now() > end) {
            std::fputs("It takes too long.\n", stderr);
            std::exit(2);
        }
    }
}

/// A figure that has not changed for two seconds is the last one.
template <typename Figure>
double timeOfLast(const Figure &figure) {
    double changed = now();
    auto last = figure();
    waitFor([&] {
        if (figure() != last) {
            last = figure();
            changed = now();
        }
        return now() - changed > 2;
    });
    return changed;
}

void run(const QString &text, double begun) {
    const testing::FrontEnd window;
    window.window->Scan();
    auto &table = *window.window->findChild<EventTableView *>();
    PaintWitness witness(*table.itemDelegate(), text);
    table.setItemDelegate(&witness);
    waitFor([&] { return witness.painted() > 0; });
    tell("first-row", now() - begun);
    tell("all-rows", timeOfLast([&] { return window.delegate.events.size(); }) - begun);
    tell("events", static_cast<double>(window.delegate.events.size()));

    auto &field = window.control<QLineEdit>("findText");
    const double typed = now();
    field.setText(text);
    waitFor([&] { return table.model()->rowCount() == 1 && witness.hasText(); });
    tell("found", now() - typed);
    const double cleared = now();
    field.clear();
    const auto rows = static_cast<int>(window.delegate.events.size());
    waitFor([&] { return table.model()->rowCount() == rows; });
    tell("cleared", now() - cleared);
    tell("resident", static_cast<double>(residentBytes()));
    // Cold parts of the list are packed while nobody does anything.
    timeOfLast([] { return residentBytes() >> 24U; });
    tell("resident-later", static_cast<double>(residentBytes()));
}

}  // namespace
}  // namespace quorbel::bench

int main(int argc, char **argv) {
    if (argc != 4) {
        std::fputs("Usage: bench_viewer LIBRARY TEXT BEGUN\n", stderr);
        return 2;
    }
    ::setenv("QUORBEL_LIBRARY", argv[1], 1);  // NOLINT(concurrency-mt-unsafe)
    const QString text = QString::fromUtf8(argv[2]);
    const double begun = std::strtod(argv[3], nullptr);
    QApplication application(argc, argv);
    quorbel::applyAppearance(application);
    quorbel::bench::run(text, begun);
    return 0;
}
