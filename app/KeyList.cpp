#include "app/KeyList.h"

#include "platform/cocoa/Scale.h"

#include <QGridLayout>
#include <QLabel>

namespace app {
namespace {

constexpr int rowSpacing = 7;
constexpr int scrollBarWidth = 9;

} // namespace

std::unique_ptr<QWidget> makeKeyList(const Commands& commands) {
    auto list = std::make_unique<QWidget>();
    QGridLayout* const layout = std::make_unique<QGridLayout>(list.get()).release();
    layout->setContentsMargins(0, 0, cocoa::scaledToInt(scrollBarWidth), 0);
    layout->setVerticalSpacing(cocoa::scaledToInt(rowSpacing));
    layout->setColumnStretch(0, 1);
    int row = 0;
    for (const Command& command : commands) {
        const QString title = command.item ? command.item->text() : command.title;
        const QKeySequence key =
            command.item ? command.item->shortcut() : command.key.value_or(QKeySequence());
        // Behind a tab is what a menu shows of a key.
        const QString shown =
            title.contains(u'\t') ? title.section(u'\t', 1) : key.toString(QKeySequence::NativeText);
        if (shown.isEmpty()) continue;
        auto keys = std::make_unique<QLabel>(shown);
        keys->setObjectName(QStringLiteral("keys"));
        layout->addWidget(std::make_unique<QLabel>(title.section(u'\t', 0, 0)).release(), row, 0);
        layout->addWidget(keys.release(), row, 1, Qt::AlignRight);
        ++row;
    }
    layout->setRowStretch(row, 1);
    return list;
}

} // namespace app
