#pragma once

#include <QObject>

#include <functional>
#include <string>
#include <vector>

class QDropEvent;
class QMimeData;
class QWidget;

namespace app {

/// Takes what other programs' files and addresses are dropped on a window.
///
/// Threads: main thread only.
class FileDrop : public QObject {
public:
    using Sources = std::vector<std::string>;

    /// `take` gets the files' paths, as their bytes, and the addresses, in their order, once the other
    /// program has been let go. Nothing is taken while a dialog waits for an answer.
    FileDrop(QWidget& window, std::function<void(const Sources&)> take);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void drop(QDropEvent& event);

    std::function<void(const Sources&)> m_take;
};

} // namespace app
