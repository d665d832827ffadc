#include "platform/gui/FilePanel.h"

#include "platform/gui/AlertBox.h"
#include "platform/gui/FileIcons.h"
#include "platform/gui/ScreenFit.h"

#include <QAbstractItemView>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QHeaderView>
#include <QKeySequence>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QShortcut>
#include <QTreeView>

#include <utility>

namespace quorbel {

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(quorbel::FilePanel)
};

constexpr QSize kPanelSize(780, 520);

/// Unlike its base, asks its questions without a nested event loop, takes a name as it was typed,
/// and completes it by its own list of extensions.
class FilePanel : public QFileDialog {
public:
    FilePanel(QWidget *parent, FilePanelRequest request);

    /// What was confirmed.
    [[nodiscard]] const QString &path() const { return m_path; }

    void accept() override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void addMessage();
    void setFilters();
    void setColumns();
    void removeCommands();
    void offerName();
    void enableAcceptButton();
    [[nodiscard]] QPushButton *acceptButton() const;
    [[nodiscard]] QLineEdit *nameField() const;
    [[nodiscard]] QString typedPath() const;
    void refuse(const QString &message, const QString &advice);
    [[nodiscard]] bool hasAllowedExtension(const QString &path) const;
    [[nodiscard]] QString chosenExtension() const;
    void confirmOpening(const QString &path);
    void confirmSaving(const QString &path);
    void finishWith(const QString &path);

    FilePanelRequest m_request;
    QString m_path;
};

FilePanel::FilePanel(QWidget *parent, FilePanelRequest request)
    // The base lists a folder before it can be told not to look into files: one that has none.
    : QFileDialog(parent, {}, QDir::rootPath()), m_request(std::move(request)) {
    setObjectName(QStringLiteral("filePanel"));
    setAttribute(Qt::WA_DeleteOnClose);
    setOptions(DontUseNativeDialog | DontConfirmOverwrite | DontUseCustomDirectoryIcons);
    setOption(ReadOnly, !m_request.save);
    setIconProvider(&fileIcons());
    setAcceptMode(m_request.save ? AcceptSave : AcceptOpen);
    setFileMode(m_request.save ? AnyFile : ExistingFile);
    setWindowTitle(m_request.message);
    const bool folderExists = !m_request.folder.isEmpty() && QDir(m_request.folder).exists();
    setDirectory(folderExists ? m_request.folder : QDir::homePath());
    setFilters();
    addMessage();
    setColumns();
    removeCommands();
    offerName();
    acceptButton()->installEventFilter(this);
    connect(nameField(), &QLineEdit::textChanged, this, &FilePanel::enableAcceptButton);
    resize(kPanelSize.boundedTo(roomOnScreen(*this)));
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
        filters.append(Texts::tr("Files (%1)").arg(pattern));
    }
    setNameFilters(filters);
}

/// All that is left of the width goes to the names.
void FilePanel::setColumns() {
    if (auto *files = findChild<QTreeView *>(QStringLiteral("treeView"))) {
        files->header()->setStretchLastSection(false);
        files->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
        files->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    }
}

/// Takes away deleting and moving by key, with the mouse, and from the lists' menus, which would
/// run an event loop of their own, too.
void FilePanel::removeCommands() {
    for (QShortcut *shortcut : findChildren<QShortcut *>()) {
        if (shortcut->key() == QKeySequence(QKeySequence::Delete)) {
            delete shortcut;
        }
    }
    for (auto *view : findChildren<QAbstractItemView *>()) {
        view->setDragDropMode(QAbstractItemView::NoDragDrop);
        view->setContextMenuPolicy(Qt::NoContextMenu);
    }
    if (!m_request.save) {
        findChild<QWidget *>(QStringLiteral("newFolderButton"))->hide();
    }
}

void FilePanel::offerName() {
    if (!m_request.save || m_request.name.isEmpty()) {
        return;
    }
    const QString suffix = QFileInfo(m_request.name).suffix();
    for (const QString &filter : nameFilters()) {
        if (filter.contains(QStringLiteral("(*.%1)").arg(suffix), Qt::CaseInsensitive)) {
            selectNameFilter(filter);
        }
    }
    nameField()->setText(m_request.name);
    nameField()->setSelection(
        0, static_cast<int>(QFileInfo(m_request.name).completeBaseName().size()));
}

QLineEdit *FilePanel::nameField() const {
    return findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
}

/// The base would take quotation marks for marks around several names.
QString FilePanel::typedPath() const {
    QString typed = nameField()->text();
    // A full path that is found is selected in the list, and its name alone may take its place.
    const auto *selection = findChild<QListView *>(QStringLiteral("listView"))->selectionModel();
    for (const QModelIndex &row : selection->selectedRows()) {
        if (row.data(QFileSystemModel::FileNameRole).toString() == typed) {
            return row.data(QFileSystemModel::FilePathRole).toString();
        }
    }
    if (typed == u'~' || typed.startsWith(QStringLiteral("~/"))) {
        typed.replace(0, 1, QDir::homePath());
    }
    return typed.startsWith(u'/') ? typed : directory().absolutePath() + u'/' + typed;
}

QPushButton *FilePanel::acceptButton() const {
    return findChild<QDialogButtonBox *>()->button(m_request.save ? QDialogButtonBox::Save
                                                                  : QDialogButtonBox::Open);
}

/// The base disables its button for what it does not find, and leaves it to the user to guess why.
void FilePanel::enableAcceptButton() {
    if (!nameField()->text().isEmpty()) {
        acceptButton()->setEnabled(true);
    }
}

bool FilePanel::eventFilter(QObject *watched, QEvent *event) {
    if (event->type() == QEvent::EnabledChange && watched == acceptButton()) {
        enableAcceptButton();
    }
    return QFileDialog::eventFilter(watched, event);
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
    if (nameField()->text().isEmpty()) {
        QFileDialog::accept();  // goes into a folder that is selected
        return;
    }
    const QString path = typedPath();
    const QFileInfo file(path);
    if (file.isDir()) {
        setDirectory(QDir::cleanPath(path));
        nameField()->setText(m_request.save ? m_request.name : QString());
    } else if (const QFileInfo folder(file.path()); !folder.isDir()) {
        refuse(Texts::tr("The folder “%1” was not found.").arg(file.path()),
               Texts::tr("Please check the name and try again."));
    } else if (m_request.save) {
        const QString clean = QDir::cleanPath(path);
        confirmSaving(hasAllowedExtension(clean) ? clean : clean + u'.' + chosenExtension());
    } else {
        confirmOpening(QDir::cleanPath(path));
    }
}

void FilePanel::refuse(const QString &message, const QString &advice) {
    openAlert(this, {.message = message, .informativeText = advice, .checkBox = {}, .buttons = {}},
              {});
}

void FilePanel::confirmOpening(const QString &path) {
    const QFileInfo file(path);
    if (!file.exists()) {
        refuse(Texts::tr("“%1” was not found.").arg(file.fileName()),
               Texts::tr("Please check the name and try again."));
    } else if (!hasAllowedExtension(path)) {
        refuse(Texts::tr("“%1” cannot be used here.").arg(file.fileName()),
               Texts::tr("Please choose a file with one of these extensions: %1.")
                   .arg(m_request.extensions.join(QStringLiteral(", "))));
    } else {
        finishWith(path);
    }
}

void FilePanel::confirmSaving(const QString &path) {
    const QFileInfo file(path);
    const QString name = file.fileName();
    if (!file.exists()) {
        finishWith(path);
        return;
    }
    if (file.isDir()) {
        refuse(Texts::tr("“%1” is a folder.").arg(name), Texts::tr("Please choose another name."));
        return;
    }
    openAlert(this,
              {.message = Texts::tr("“%1” already exists.").arg(name),
               .informativeText = Texts::tr("Replacing it will overwrite its current contents."),
               .checkBox = {},
               .buttons = {Texts::tr("Replace"), Texts::tr("Cancel")}},
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
