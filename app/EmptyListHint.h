#pragma once

#include <QWidget>

namespace app {

/// Shown while the list is empty: how to add music.
class EmptyListHint : public QWidget {
    Q_OBJECT
public:
    explicit EmptyListHint(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace app
