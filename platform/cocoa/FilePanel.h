#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QFileDialog;
class QWidget;

namespace cocoa {

/// Base of the open and the save panel. A panel is set up, shown once as a sheet on a window, and may be
/// destroyed before the user answers. Uses the desktop's file chooser if there is one. The next panel of this
/// process starts in the last folder used.
class FilePanel {
public:
    void setTitle(const QString& title) { m_title = title; }
    /// Sets the file filter: a description ("Audio files") and extensions without dots. "All files" is
    /// offered as well.
    void setAllowedFileTypes(const QString& description, const QStringList& extensions);
    /// The folder in which the first panel of this process starts.
    void setDirectory(const QString& folder) { m_directory = folder; }

protected:
    FilePanel() = default;
    ~FilePanel() = default;

    /// Sets title, file types and start folder of `dialog`.
    void setUp(QFileDialog& dialog) const;
    /// Shows `dialog` as a sheet and calls `completion` on the main thread with the chosen paths, in the
    /// panel's order, once the dialog is closed; not at all when the user cancels.
    static void beginSheet(QFileDialog& dialog, std::function<void(const QStringList&)> completion);
    const QStringList& allowedFileTypes() const { return m_extensions; }

private:
    QString m_title;
    QString m_description;
    QStringList m_extensions;
    QString m_directory;
};

} // namespace cocoa
