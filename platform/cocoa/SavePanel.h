#pragma once

#include "platform/cocoa/FilePanel.h"

namespace cocoa {

/// Asks for a file to write. A name without one of the allowed types gets the first of them; a file that
/// exists is replaced only after a question.
class SavePanel : public FilePanel {
public:
    /// Proposes a name; "/" in it becomes "-".
    void setNameFieldStringValue(const QString& name) { m_name = name; }

    /// Proposes a file, in its folder, with the first of the allowed types, instead of a name.
    void setFile(const QString& path) { m_file = path; }

    /// `completion` receives the path; not called when the user cancels or the window is destroyed.
    void beginSheetModalForWindow(QWidget& window, std::function<void(const QString& path)> completion) const;

private:
    QString m_name;
    QString m_file;
};

} // namespace cocoa
