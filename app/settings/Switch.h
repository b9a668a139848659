#pragma once

#include <QCheckBox>

namespace app {

/// A row that switches something: what it is, a quieter line below it if there is more to say, and at its end
/// a knob that slides. A click anywhere on it switches.
class Switch : public QCheckBox {
    Q_OBJECT
public:
    explicit Switch(const QString& title, QWidget* parent = nullptr);

    void setNote(const QString& note);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool hitButton(const QPoint& place) const override;
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    QString m_note;
};

} // namespace app
