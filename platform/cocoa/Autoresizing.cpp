#include "platform/cocoa/Autoresizing.h"

#include "platform/cocoa/Scale.h"

#include <QEvent>
#include <QVariant>
#include <QWidget>

#include <algorithm>
#include <memory>

namespace cocoa {
Autoresizing& Autoresizing::of(QWidget& view) {
    return *std::unique_ptr<Autoresizing>(new Autoresizing(view)).release();
}

Autoresizing::Autoresizing(QWidget& view) : QObject(&view), m_view(view), m_designSize(view.size()) {
    for (QWidget* child : view.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        m_designRects.insert(child, child->geometry());
    view.installEventFilter(this);
    connect(&Scale::shared(), &Scale::changed, this, &Autoresizing::layOut);
    layOut();
}

void Autoresizing::layOut() {
    const int surplus = m_view.height() - scaledToInt(m_designSize.height());
    for (auto [child, design] : m_designRects.asKeyValueRange()) {
        QRect place = scaledToInt(QRectF(design));
        const QByteArray yields = child->property("autoresizing").toByteArray();
        if (yields == "height") place.setHeight(std::max(0, place.height() + surplus));
        if (yields == "top") place.translate(0, surplus);
        child->setGeometry(place);
    }
    emit laidOut();
}

bool Autoresizing::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize) layOut();
    return QObject::eventFilter(watched, event);
}

} // namespace cocoa
