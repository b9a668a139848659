#pragma once

#include "platform/cocoa/FilePanel.h"

namespace cocoa {

/// Asks for files that exist; folders can't be chosen.
class OpenPanel : public FilePanel {
public:
    void setAllowsMultipleSelection(bool allows) { m_allowsMultipleSelection = allows; }

    /// `completion` gets the paths; it is not called when the user cancels or the window goes.
    void beginSheetModalForWindow(QWidget& window,
                                  std::function<void(const QStringList& paths)> completion) const;

private:
    bool m_allowsMultipleSelection = false;
};

} // namespace cocoa
