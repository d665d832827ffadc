#include "platform/gui/EventsText.h"

#include "platform/gui/QtText.h"

#include <QCoreApplication>

namespace quorbel {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(quorbel::EventsText)
};

}  // namespace

QString eventsText(std::size_t count) {
    const auto number = static_cast<qint64>(count);
    return count == 1
               ? Texts::tr("1 event")
               : Texts::tr("%1 events", nullptr, pluralNumber(number)).arg(countText(number));
}

QString eventsText(const QString &part, std::size_t count) {
    const auto number = static_cast<qint64>(count);
    return count == 1 ? Texts::tr("%1 of 1 event").arg(part)
                      : Texts::tr("%1 of %2 events", nullptr, pluralNumber(number))
                            .arg(part, countText(number));
}

}  // namespace quorbel
