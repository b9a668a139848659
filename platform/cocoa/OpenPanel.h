#pragma once

#include "platform/cocoa/FilePanel.h"

namespace cocoa {

/// Asks for files that exist, or for a folder.
class OpenPanel : public FilePanel {
public:
    void setAllowsMultipleSelection(bool allows) { m_allowsMultipleSelection = allows; }
    /// Chooses one folder instead of files.
    void setCanChooseDirectories(bool can) { m_canChooseDirectories = can; }

    /// `completion` receives the paths; not called when the user cancels or the window is destroyed.
    void beginSheetModalForWindow(QWidget& window,
                                  std::function<void(const QStringList& paths)> completion) const;

private:
    bool m_allowsMultipleSelection = false;
    bool m_canChooseDirectories = false;
};

} // namespace cocoa
