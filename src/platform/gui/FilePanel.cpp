#include "platform/gui/FilePanel.h"

#include "platform/gui/AlertBox.h"
#include "platform/gui/Icons.h"

#include <QAbstractFileIconProvider>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QTreeView>

#include <utility>

namespace quorbel {

namespace {

constexpr QSize kPanelSize(780, 520);

class PanelIcons : public QAbstractFileIconProvider {
public:
    [[nodiscard]] QIcon icon(IconType type) const override {
        return lineIcon(type == File ? QStringLiteral("file") : QStringLiteral("folder"));
    }
    [[nodiscard]] QIcon icon(const QFileInfo &info) const override {
        return icon(info.isDir() ? Folder : File);
    }
};

/// Unlike its base, asks its questions without a nested event loop, and completes names by its own
/// list of extensions.
class FilePanel : public QFileDialog {
public:
    FilePanel(QWidget *parent, FilePanelRequest request);

    /// What was confirmed.
    [[nodiscard]] const QString &path() const { return m_path; }

    void accept() override;

private:
    void addMessage();
    void setFilters();
    [[nodiscard]] bool hasAllowedExtension(const QString &path) const;
    [[nodiscard]] QString chosenExtension() const;
    void confirmOpening(const QString &path);
    void confirmSaving(const QString &path);
    void finishWith(const QString &path);

    FilePanelRequest m_request;
    QString m_path;
};

FilePanel::FilePanel(QWidget *parent, FilePanelRequest request)
    : QFileDialog(parent), m_request(std::move(request)) {
    setObjectName(QStringLiteral("filePanel"));
    setAttribute(Qt::WA_DeleteOnClose);
    setOptions(DontUseNativeDialog | DontConfirmOverwrite | DontUseCustomDirectoryIcons);
    setAcceptMode(m_request.save ? AcceptSave : AcceptOpen);
    setFileMode(m_request.save ? AnyFile : ExistingFile);
    setWindowTitle(m_request.message);
    const bool folderExists = !m_request.folder.isEmpty() && QDir(m_request.folder).exists();
    setDirectory(folderExists ? m_request.folder : QDir::homePath());
    setFilters();
    addMessage();
    // The dialog's file list asks it from a thread of its own until the very end of the dialog.
    static PanelIcons icons;
    setIconProvider(&icons);
    if (auto *files = findChild<QTreeView *>(QStringLiteral("treeView"))) {
        files->header()->setStretchLastSection(true);
    }
    resize(kPanelSize);
}

void FilePanel::addMessage() {
    auto *message = new QLabel(m_request.message);
    message->setObjectName(QStringLiteral("filePanelMessage"));
    message->setTextFormat(Qt::PlainText);
    message->setContentsMargins(12, 12, 12, 0);
    // The one place that a layout has outside its own cells.
    layout()->setMenuBar(message);
}

void FilePanel::setFilters() {
    QStringList patterns;
    for (const QString &extension : m_request.extensions) {
        patterns.append(QStringLiteral("*.") + extension);
    }
    if (patterns.isEmpty()) {
        return;
    }
    if (!m_request.save) {
        patterns = {patterns.join(u' ')};
    }
    QStringList filters;
    for (const QString &pattern : std::as_const(patterns)) {
        filters.append(QStringLiteral("Files (%1)").arg(pattern));
    }
    setNameFilters(filters);
}

bool FilePanel::hasAllowedExtension(const QString &path) const {
    return m_request.extensions.isEmpty() ||
           m_request.extensions.contains(QFileInfo(path).suffix(), Qt::CaseInsensitive);
}

QString FilePanel::chosenExtension() const {
    for (const QString &extension : m_request.extensions) {
        if (selectedNameFilter().contains(QStringLiteral("(*.%1)").arg(extension))) {
            return extension;
        }
    }
    return m_request.extensions.value(0);
}

void FilePanel::accept() {
    const QString path = selectedFiles().value(0);
    if (path.isEmpty() || QFileInfo(path).isDir()) {
        QFileDialog::accept();  // goes into the folder
    } else if (m_request.save) {
        confirmSaving(hasAllowedExtension(path) ? path : path + u'.' + chosenExtension());
    } else {
        confirmOpening(path);
    }
}

void FilePanel::confirmOpening(const QString &path) {
    const QFileInfo file(path);
    if (!file.exists()) {
        openAlert(this,
                  {.message = QStringLiteral("“%1” was not found.").arg(file.fileName()),
                   .informativeText = QStringLiteral("Please check the name and try again."),
                   .checkBox = {},
                   .buttons = {}},
                  {});
    } else if (!hasAllowedExtension(path)) {
        openAlert(this,
                  {.message = QStringLiteral("“%1” cannot be used here.").arg(file.fileName()),
                   .informativeText = QStringLiteral("Please choose a file with one of these "
                                                     "extensions: %1.")
                                          .arg(m_request.extensions.join(QStringLiteral(", "))),
                   .checkBox = {},
                   .buttons = {}},
                  {});
    } else {
        finishWith(path);
    }
}

void FilePanel::confirmSaving(const QString &path) {
    if (!QFileInfo::exists(path)) {
        finishWith(path);
        return;
    }
    const QString name = QFileInfo(path).fileName();
    openAlert(this,
              {.message = QStringLiteral("“%1” already exists.").arg(name),
               .informativeText = QStringLiteral("Replacing it overwrites what it holds now."),
               .checkBox = {},
               .buttons = {QStringLiteral("Replace"), QStringLiteral("Cancel")}},
              [this, path](const AlertAnswer &answer) {
                  if (answer.button == 0) {
                      finishWith(path);
                  }
              });
}

void FilePanel::finishWith(const QString &path) {
    m_path = path;
    QDialog::accept();  // NOLINT(bugprone-parent-virtual-call): the base would ask again
}

}  // namespace

void openFilePanel(QWidget *parent, const FilePanelRequest &request,
                   std::function<void(const QString &path)> onChosen) {
    auto *panel = new FilePanel(parent, request);
    QObject::connect(panel, &QDialog::accepted, panel, [panel, chosen = std::move(onChosen)] {
        if (chosen) {
            chosen(panel->path());
        }
    });
    panel->open();
}

}  // namespace quorbel
