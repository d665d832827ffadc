#include "platform/gui/FileIcons.h"

#include "platform/gui/Icons.h"

#include <QFileInfo>

namespace quorbel {

namespace {

class FileIcons : public QAbstractFileIconProvider {
public:
    [[nodiscard]] QIcon icon(IconType type) const override {
        return lineIcon(type == File ? QStringLiteral("file") : QStringLiteral("folder"));
    }
    [[nodiscard]] QIcon icon(const QFileInfo &info) const override {
        return icon(info.isDir() ? Folder : File);
    }
    [[nodiscard]] QString type(const QFileInfo &info) const override {
        if (info.isDir()) {
            return QStringLiteral("Folder");
        }
        const QString suffix = info.suffix();
        return suffix.isEmpty() ? QStringLiteral("File")
                                : QStringLiteral("%1 file").arg(suffix.toLower());
    }
};

}  // namespace

QAbstractFileIconProvider &fileIcons() {
    static FileIcons icons;
    return icons;
}

}  // namespace quorbel
