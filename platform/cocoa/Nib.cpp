#include "platform/cocoa/Nib.h"

#include <QWidget>

namespace cocoa {

void awakeFromNib(QWidget& root) {
    const auto children = root.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget* child : children)
        awakeFromNib(*child);
    if (auto* awaking = dynamic_cast<NibAwaking*>(&root)) awaking->awakeFromNib();
}

} // namespace cocoa
