#include "platform/gui/FileIcons.h"

#include "platform/gui/Icons.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace quorbel {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(quorbel::FileIcons)
};

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
            return Texts::tr("Folder");
        }
        const QString suffix = info.suffix();
        return suffix.isEmpty() ? Texts::tr("File") : Texts::tr("%1 file").arg(suffix.toLower());
    }
};

}  // namespace

QAbstractFileIconProvider &fileIcons() {
    static FileIcons icons;
    return icons;
}

}  // namespace quorbel
