#pragma once

#include "app/TextField.h"

#include <QPushButton>
#include <QWidget>

namespace app {

/// A line of text, with a progress bar and a stop button during an operation.
class StatusLine : public QWidget {
    Q_OBJECT
public:
    explicit StatusLine(QWidget* parent = nullptr);

    QString text() const { return m_text.text(); }
    /// `fraction` is 0 … 1.
    void showProgress(const QString& text, double fraction);
    void showText(const QString& text);

    QPushButton& stopButton() { return m_stop; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void showLine(const QString& text, double fraction);
    QRectF barRect() const;

    TextField m_text;
    QPushButton m_stop;
    double m_fraction = -1; ///< Below 0: no bar.
};

} // namespace app
