#pragma once

#include "platform/cocoa/ViewController.h"

#include <QString>

class TulPlayer;

/// A page of the main window: its view is loaded from a layout, its name is shown in the title strip.
class FenMultiFunctionalViewController : public cocoa::ViewController {
public:
    TulPlayer* player = nullptr;
    QString displayName;

    void setPlayer(TulPlayer* newPlayer) { player = newPlayer; }
    void setDisplayName(const QString& name) { displayName = name; }

    /// Called once by the delegate, before the page's view is loaded. Pages override it.
    virtual void initialize();
};
