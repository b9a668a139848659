#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class QFileDialog;
class QWidget;

namespace cocoa {

/// What the open and the save panel share. A panel is set up, shown once as a sheet on a window, and may be
/// gone before the user answers. The desktop's own file chooser is shown where it offers one; hidden files
/// and whatever else it can show are the user's choice there. The last folder used is where the next panel of
/// the run begins.
class FilePanel {
public:
    void setTitle(const QString& title) { m_title = title; }
    /// The files that the panel offers, as what the user calls them ("Audio files") and their extensions,
    /// without dots. "All files" can be chosen beside them.
    void setAllowedFileTypes(const QString& description, const QStringList& extensions);
    /// Where the first panel of the run begins.
    void setDirectory(const QString& folder) { m_directory = folder; }

protected:
    FilePanel() = default;
    ~FilePanel() = default;

    /// Gives `dialog` the title, the file types and the folder to begin in.
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
