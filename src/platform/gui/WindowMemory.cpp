#include "platform/gui/WindowMemory.h"

#include "platform/gui/MemoryWriter.h"

#include <QCoreApplication>
#include <QSettings>
#include <QStandardPaths>

namespace quorbel {

namespace {

QString memoryFile() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/QuorbelWindow.ini");
}

MemoryWriter &writer() {
    static MemoryWriter writer;
    return writer;
}

/// Later than the last window's end, but before that of what Qt writes with.
void finishWithApplication() {
    static bool isAsked = false;
    if (!isAsked) {
        isAsked = true;
        qAddPostRoutine([] {
            isAsked = false;
            finishRemembering();
        });
    }
}

void change(const QString &key, const QVariant &value) {
    writer().write({memoryFile(), key, value});
    if (QCoreApplication::instance() == nullptr) {
        finishRemembering();
    } else {
        finishWithApplication();
    }
}

}  // namespace

QVariant remembered(const QString &key, const QVariant &otherwise) {
    const QString file = memoryFile();
    const auto onItsWay = writer().find(file, key);
    const QVariant value = onItsWay ? *onItsWay : QSettings(file, QSettings::IniFormat).value(key);
    return value.isValid() ? value : otherwise;
}

void remember(const QString &key, const QVariant &value) {
    change(key, value);
}

void forget(const QString &key) {
    change(key, {});
}

void finishRemembering() {
    writer().finish();
}

}  // namespace quorbel
