#include "app/FenReleaseNotesController.h"

#include "app/Skin.h"
#include "platform/cocoa/Autoresizing.h"
#include "platform/cocoa/Bundle.h"
#include "platform/cocoa/RichText.h"
#include "platform/cocoa/Scale.h"
#include "ui_ReleaseNotesView.h"

#include <QTextBlock>
#include <QTextCursor>

namespace {

constexpr int textMargin = 16;

void scaleFonts(QTextDocument& document) {
    QTextCursor cursor(&document);
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next())
        for (const QTextLayout::FormatRange& range : block.textFormats()) {
            if (!range.format.hasProperty(QTextFormat::FontPointSize)) continue;
            QTextCharFormat format;
            format.setFontPointSize(cocoa::scaled(range.format.fontPointSize()));
            cursor.setPosition(block.position() + range.start);
            cursor.setPosition(cursor.position() + range.length, QTextCursor::KeepAnchor);
            cursor.mergeCharFormat(format);
        }
}

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
    QObject::connect(&cocoa::Scale::shared(), &cocoa::Scale::changed, &view, [this] { showNotes(); });
}

void FenReleaseNotesController::awakeFromNib() {
    showNotes();
}

void FenReleaseNotesController::showNotes() {
    cocoa::readRTFDFromFile(*releaseNotesView, cocoa::Bundle::pathForResource(QStringLiteral("release_notes"),
                                                                              QStringLiteral("rtf")));
    QTextDocument& notes = *releaseNotesView->document();
    notes.setDocumentMargin(cocoa::scaled(textMargin));
    scaleFonts(notes);
}
