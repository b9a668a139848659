#pragma once

#include <QLabel>
#include <QTimer>

#include <functional>

namespace app {

/// A line of plain text that ends in an ellipsis where it does not fit; never rich text, whatever a tag
/// holds. The whole text is its tool tip then. With an action it can be clicked.
class TextField : public QLabel {
    Q_OBJECT
    Q_PROPERTY(QColor textColour READ textColour WRITE setTextColour)
    /// Height of the font in points of the layout.
    Q_PROPERTY(double fontSize READ fontSize WRITE setFontSize)
    Q_PROPERTY(bool bold READ isBold WRITE setBold)
public:
    explicit TextField(QWidget* parent = nullptr);

    QString stringValue() const { return text(); }
    void setStringValue(const QString& string);
    /// Shows another text for a moment, then its own again.
    void showBriefly(const QString& string);

    /// Called on a click.
    void setAction(std::function<void()> action);

    QColor textColour() const { return m_textColour; }
    void setTextColour(const QColor& colour);
    double fontSize() const { return m_fontSize; }
    void setFontSize(double size);
    bool isBold() const { return font().bold(); }
    void setBold(bool bold);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void updateToolTip();

    double m_fontSize = 12;
    QColor m_textColour = Qt::white;
    std::function<void()> m_action;
    QString m_own; ///< While another text is shown briefly.
    QTimer m_brief;
};

} // namespace app
