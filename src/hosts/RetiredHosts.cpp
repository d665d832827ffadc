#include "hosts/RetiredHosts.h"

#include "platform/gui/QtText.h"
#include "platform/gui/WindowMemory.h"

#include <QStringList>

namespace quorbel {

namespace {

const QString kKey = QStringLiteral("hosts/retired");

}  // namespace

HostWatch::Names rememberedRetiredHosts() {
    HostWatch::Names names;
    const QStringList remembered = windowMemory().value(kKey).toStringList();
    for (const QString &name : remembered) {
        if (!name.isEmpty()) {
            names.insert(name.toStdString());
        }
    }
    return names;
}

void rememberRetiredHosts(const HostWatch::Names &names) {
    QStringList remembered;
    for (const std::string &name : names) {
        remembered.append(toQString(name));
    }
    QSettings memory = windowMemory();
    if (remembered.isEmpty()) {
        memory.remove(kKey);
    } else {
        memory.setValue(kKey, remembered);
    }
}

}  // namespace quorbel
