#pragma once

#include <QAbstractButton>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <vector>

namespace app {

/// A dot that stands for a page; checked while the page is shown.
class PageDot : public QAbstractButton {
    Q_OBJECT
public:
    PageDot(const QString& pageName, QWidget& parent);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

/// A row of dots, one a page, that shows where one is; a click or the arrow keys go to another page.
class PageDots : public QWidget {
    Q_OBJECT
public:
    explicit PageDots(QWidget* parent = nullptr) : QWidget(parent) {}

    /// Names of the pages, for tool tips and screen readers. Once.
    void setPages(const QStringList& names);
    void setCurrentPage(int page);
    void setAction(std::function<void(int page)> action) { m_action = std::move(action); }

private:
    std::vector<PageDot*> m_dots; ///< Children of this.
    std::function<void(int)> m_action;
};

} // namespace app
