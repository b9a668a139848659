#pragma once

#include <QWidget>

namespace app {

/// What the list shows while it is empty: how music gets there.
class EmptyListHint : public QWidget {
    Q_OBJECT
public:
    explicit EmptyListHint(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace app
