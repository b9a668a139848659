#include "app/FenReleaseNotesController.h"

#include "app/Skin.h"
#include "platform/cocoa/Autoresizing.h"
#include "platform/cocoa/Bundle.h"
#include "platform/cocoa/RichText.h"
#include "ui_ReleaseNotesView.h"

namespace {

constexpr int textMargin = 16;

} // namespace

void FenReleaseNotesController::initialize() {
    displayName = QStringLiteral("Release Notes");
}

void FenReleaseNotesController::loadView(QWidget& view) {
    Ui::ReleaseNotesView layout;
    layout.setupUi(&view);
    cocoa::Autoresizing::of(view);
    releaseNotesView = layout.releaseNotesView;
    view.setFocusProxy(releaseNotesView);
    app::dressInSkin(*releaseNotesView);
    releaseNotesView->document()->setDocumentMargin(textMargin);
}

void FenReleaseNotesController::awakeFromNib() {
    cocoa::readRTFDFromFile(*releaseNotesView, cocoa::Bundle::pathForResource(QStringLiteral("release_notes"),
                                                                              QStringLiteral("rtf")));
}
