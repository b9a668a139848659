#pragma once

#include <QString>

namespace cocoa {

class ViewController;

/// Gives a page controller its pages and hears of turned ones. Called on the main thread.
class PageControllerDelegate {
public:
    virtual ~PageControllerDelegate() = default;

    virtual QString identifierForObject(const QString& object) = 0;
    /// The page, not handed over; null for an identifier that has none. Asked when the page is first needed.
    virtual ViewController* viewControllerForIdentifier(const QString& identifier) = 0;
    /// The user has begun to turn to this page: selectedIndex and selectedViewController are the new ones
    /// already.
    virtual void didTransitionToObject(const QString& object);
    /// The slide to the page the user turned to is over; call completeTransition.
    virtual void pageControllerDidEndLiveTransition() = 0;
};

} // namespace cocoa
