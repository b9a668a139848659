#pragma once

#include "app/FenMultiFunctionalViewController.h"

class QTextBrowser;

/// The page that shows the release notes. They are read once, when the page is first turned to. It needs no
/// player.
///
/// Threads: main thread only.
class FenReleaseNotesController : public FenMultiFunctionalViewController {
public:
    /// Null until the page's view is loaded.
    QTextBrowser* releaseNotesView = nullptr;

    void initialize() override;

protected:
    void loadView(QWidget& view) override;
    void awakeFromNib() override;

private:
    void showNotes();
};
