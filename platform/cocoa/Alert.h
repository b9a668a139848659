#pragma once

#include <QDialog>

#include <memory>

class QVBoxLayout;

namespace cocoa {

/// A modal question with a default and, where wanted, an alternate button.
class Alert : public QDialog {
    Q_OBJECT
public:
    enum Response { alternateReturn = 0, defaultReturn = 1 };

    struct Texts {
        QString message;
        QString defaultButton;
        QString alternateButton; ///< Empty for none.
        QString informative;     ///< Shown under the message, smaller.
    };
    explicit Alert(const Texts& texts, QWidget* parent = nullptr);

    /// Shows `view` between the texts and the buttons and gives it the focus. Takes ownership.
    void setAccessoryView(std::unique_ptr<QWidget> view);

    /// Blocks until a button is pressed; Escape and closing the window mean the alternate button. Timers
    /// pause.
    Response runModal();

private:
    QVBoxLayout* m_layout; ///< Owned by the dialog.
};

} // namespace cocoa
