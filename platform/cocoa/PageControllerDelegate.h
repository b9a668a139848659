#pragma once

#include <QString>

namespace cocoa {

class ViewController;

/// Provides the pages of a page controller, and is notified of turns. Called on the main thread.
class PageControllerDelegate {
public:
    virtual ~PageControllerDelegate() = default;

    virtual QString identifierForObject(const QString& object) = 0;
    /// The page, not owned by the caller; null for an unknown identifier. Called when the page is first
    /// needed.
    virtual ViewController* viewControllerForIdentifier(const QString& identifier) = 0;
    /// The user has begun to turn to this page: selectedIndex and selectedViewController are the new ones
    /// already.
    virtual void didTransitionToObject(const QString& object);
    /// The transition is over; call completeTransition.
    virtual void pageControllerDidEndLiveTransition() = 0;
};

} // namespace cocoa
