#pragma once

#include "app/TextField.h"

#include <QLineEdit>
#include <QWidget>

namespace app {

/// The strip over the list that a search is typed into, with what came of it at its end.
class SearchField : public QWidget {
    Q_OBJECT
public:
    explicit SearchField(QWidget* parent = nullptr);

    QLineEdit& line() { return m_line; }
    QString result() const { return m_result.text(); }
    void setResult(const QString& text) { m_result.setStringValue(text); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QRectF box() const;

    QLineEdit m_line;
    TextField m_result;
};

} // namespace app
