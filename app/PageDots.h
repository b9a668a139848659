#pragma once

#include <QStringList>
#include <QWidget>

#include <functional>

namespace app {

/// A row of dots, one a page, that shows where one is; a click or the arrow keys go to another page.
class PageDots : public QWidget {
    Q_OBJECT
public:
    explicit PageDots(QWidget* parent = nullptr);

    /// Names of the pages, for tool tips and screen readers.
    void setPages(const QStringList& names);
    void setCurrentPage(int page);
    int currentPage() const { return m_current; }
    void setAction(std::function<void(int page)> action) { m_action = std::move(action); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    QRectF dotRect(int page) const;
    int pageAt(const QPointF& point) const;
    void setHovered(int page);
    void choose(int page);

    QStringList m_names;
    int m_current = 0;
    int m_hovered = -1;
    std::function<void(int)> m_action;
};

} // namespace app
