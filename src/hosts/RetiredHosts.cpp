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
    const QStringList retired = remembered(kKey).toStringList();
    for (const QString &name : retired) {
        if (!name.isEmpty()) {
            names.insert(name.toStdString());
        }
    }
    return names;
}

void rememberRetiredHosts(const HostWatch::Names &names) {
    QStringList retired;
    for (const std::string &name : names) {
        retired.append(toQString(name));
    }
    if (retired.isEmpty()) {
        forget(kKey);
    } else {
        remember(kKey, retired);
    }
}

}  // namespace quorbel
