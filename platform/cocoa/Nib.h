#pragma once

class QWidget;

namespace cocoa {

/// A widget that is notified when its layout file has been loaded.
class NibAwaking {
public:
    virtual ~NibAwaking() = default;
    virtual void awakeFromNib() = 0;
};

/// Calls awakeFromNib of `root` and of every widget in it that is NibAwaking, children first. To be called
/// once, after setupUi of the layout's class.
void awakeFromNib(QWidget& root);

} // namespace cocoa
