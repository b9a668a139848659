#pragma once

namespace cocoa {

/// The main thread's run loop, as far as timers need it: they fire in its default mode only. A modal prompt,
/// a control that tracks the mouse and a drag of rows hold a RunLoop::Mode while they last; an open menu or
/// list is seen by itself. Main thread only.
class RunLoop {
public:
    /// Leaves the default mode while the object lives. Can be nested.
    class Mode {
    public:
        Mode();
        ~Mode();
        Mode(const Mode&) = delete;
        Mode& operator=(const Mode&) = delete;
    };

    static bool isInDefaultMode();
};

} // namespace cocoa
