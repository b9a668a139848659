#include "controls/FenSpectrumAnalyzerView.h"

#include "controls/Colours.h"
#include "platform/cocoa/Scale.h"

#include <QPaintEvent>
#include <QPainter>

namespace {
constexpr double barWidth = 3.8;
constexpr double barPitch = 5.8;
} // namespace

FenSpectrumAnalyzerView::FenSpectrumAnalyzerView(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

QRectF FenSpectrumAnalyzerView::barRect(std::size_t index, std::int32_t value, const QRectF& redrawn) {
    const double height = value;
    return {static_cast<double>(index) * barPitch, redrawn.bottom() - height, barWidth, height};
}

void FenSpectrumAnalyzerView::drawRect(QPainter& painter, const QRectF& redrawn) const {
    if (!m_spectrumValues) return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor colour = colours::blue();
    for (std::size_t i = 0; i < m_spectrumValues->size(); ++i)
        painter.fillRect(barRect(i, (*m_spectrumValues)[i], redrawn), colour);
    painter.restore();
}

void FenSpectrumAnalyzerView::paintEvent(QPaintEvent* event) {
    cocoa::DesignPainter painter(this);
    drawRect(painter, cocoa::designRect(wantsDefaultClipping() ? event->rect() : rect()));
}

void FenSpectrumAnalyzerView::showEvent(QShowEvent*) {
    if (m_onSight) m_onSight(true);
}

void FenSpectrumAnalyzerView::hideEvent(QHideEvent*) {
    if (m_onSight) m_onSight(false);
}
