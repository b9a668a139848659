#include "platform/cocoa/FilePanel.h"

#include "platform/cocoa/OpenPanel.h"
#include "platform/cocoa/SavePanel.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPointer>

#include <memory>

namespace cocoa {
namespace {

/// Kept for the run only.
QString& lastFolder() {
    static QString folder;
    return folder;
}

/// Some desktops match these by letter case, so both are named.
QString filterOf(const QString& description, const QStringList& extensions) {
    QStringList patterns;
    for (const QString& extension : extensions) {
        patterns << QLatin1String("*.") + extension << QLatin1String("*.") + extension.toUpper();
    }
    return description + QLatin1String(" (") + patterns.join(QLatin1Char(' ')) + QLatin1Char(')');
}

/// A dialog belongs to its window, and goes when it is closed.
QFileDialog& dialogOn(QWidget& window) {
    QFileDialog* const dialog = std::make_unique<QFileDialog>(&window).release();
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    return *dialog;
}

bool endsWithOneOf(const QString& path, const QStringList& extensions) {
    return extensions.isEmpty() || extensions.contains(QFileInfo(path).suffix(), Qt::CaseInsensitive);
}

/// A name of a playlist as the name of one file.
QString fileNameOf(QString name) {
    return name.replace(QLatin1Char('/'), QLatin1Char('-'));
}

QString nameOfType(const QFileInfo& file, const QStringList& extensions) {
    if (endsWithOneOf(file.fileName(), extensions)) return file.fileName();
    return file.completeBaseName() + QLatin1Char('.') + extensions.front();
}

bool mayReplace(QWidget& window, const QString& path) {
    const QString question = QObject::tr("“%1” exists already. Replace it?").arg(QFileInfo(path).fileName());
    QMessageBox box(QMessageBox::Question, QString(), question, QMessageBox::Yes | QMessageBox::No, &window);
    box.setTextFormat(Qt::PlainText); // a name may look like markup
    return box.exec() == QMessageBox::Yes;
}

} // namespace

void FilePanel::setAllowedFileTypes(const QString& description, const QStringList& extensions) {
    m_description = description;
    m_extensions = extensions;
}

void FilePanel::setUp(QFileDialog& dialog) const {
    dialog.setWindowTitle(m_title);
    if (!m_extensions.isEmpty()) {
        dialog.setOption(
            QFileDialog::HideNameFilterDetails); // dozens of patterns, of which the list shows few
        dialog.setNameFilters({filterOf(m_description, m_extensions), QObject::tr("All files (*)")});
    }
    const QString folder = lastFolder().isEmpty() ? m_directory : lastFolder();
    if (!folder.isEmpty()) dialog.setDirectory(folder);
}

void FilePanel::beginSheet(QFileDialog& dialog, std::function<void(const QStringList&)> completion) {
    QObject::connect(&dialog, &QFileDialog::accepted, &dialog, [&dialog, completion = std::move(completion)] {
        lastFolder() = dialog.directory().absolutePath();
        const QStringList chosen = dialog.selectedFiles();
        if (chosen.isEmpty()) return;
        // Later: events that are handled meanwhile would delete the dialog, which is not done yet.
        QMetaObject::invokeMethod(
            dialog.parentWidget(), [completion, chosen] { completion(chosen); }, Qt::QueuedConnection);
    });
    dialog.open();
}

void OpenPanel::beginSheetModalForWindow(QWidget& window,
                                         std::function<void(const QStringList& paths)> completion) const {
    QFileDialog& dialog = dialogOn(window);
    if (m_canChooseDirectories)
        dialog.setFileMode(QFileDialog::Directory);
    else
        dialog.setFileMode(m_allowsMultipleSelection ? QFileDialog::ExistingFiles
                                                     : QFileDialog::ExistingFile);
    setUp(dialog);
    beginSheet(dialog, std::move(completion));
}

void SavePanel::beginSheetModalForWindow(QWidget& window,
                                         std::function<void(const QString& path)> completion) const {
    QFileDialog& dialog = dialogOn(window);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    setUp(dialog);
    // After the folder: the desktop's own choosers take the name for one there.
    const QFileInfo file(m_file);
    if (!m_file.isEmpty()) dialog.setDirectory(file.absolutePath());
    dialog.selectFile(m_file.isEmpty() ? fileNameOf(m_name) : nameOfType(file, allowedFileTypes()));
    if (!allowedFileTypes().isEmpty()) dialog.setDefaultSuffix(allowedFileTypes().front());
    const QPointer<QWidget> shownOn = &window;
    beginSheet(dialog,
               [types = allowedFileTypes(), shownOn, completion = std::move(completion)](const auto& chosen) {
                   QString path = chosen.front();
                   if (!endsWithOneOf(path, types)) {
                       // The dialog asked about the name as it was typed ("Songs v1.2"), not about this one.
                       path += QLatin1Char('.') + types.front();
                       if (shownOn == nullptr || (QFileInfo::exists(path) && !mayReplace(*shownOn, path)))
                           return;
                   }
                   completion(path);
               });
}

} // namespace cocoa
