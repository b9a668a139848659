#include "app/FenReleaseNotesController.h"

#include "platform/cocoa/Bundle.h"
#include "platform/cocoa/RichText.h"
#include "ui_ReleaseNotesView.h"

namespace {

QPalette darkPalette() {
    QPalette palette;
    palette.setColor(QPalette::Base, QColor(0x22, 0x22, 0x22));
    palette.setColor(QPalette::Text, QColor(0xb9, 0xc6, 0xd6));
    palette.setColor(QPalette::Highlight, QColor(0x29, 0x36, 0x44));
    palette.setColor(QPalette::HighlightedText, QColor(0xf8, 0xe7, 0x1c));
    return palette;
}

constexpr int textMargin = 16;

} // namespace

void FenReleaseNotesController::initialize() {
    displayName = QStringLiteral("Release Notes");
}

void FenReleaseNotesController::loadView(QWidget& view) {
    Ui::ReleaseNotesView layout;
    layout.setupUi(&view);
    releaseNotesView = layout.releaseNotesView;
    releaseNotesView->setPalette(darkPalette());
    releaseNotesView->document()->setDocumentMargin(textMargin);
}

void FenReleaseNotesController::awakeFromNib() {
    cocoa::readRTFDFromFile(*releaseNotesView, cocoa::Bundle::pathForResource(QStringLiteral("release_notes"),
                                                                              QStringLiteral("rtf")));
}
