#include "platform/bass/Attribute.h"

namespace bass {
namespace {

/// 5 ms at 44.1 kHz: too short to be noticed as a slide, long enough to avoid a click.
constexpr std::uint32_t smoothingFrames = 220;

} // namespace

void Attribute::set(float value) {
    m_sliding = false;
    order(value, smoothingFrames);
}

void Attribute::slide(float value, std::uint32_t frames) {
    m_sliding = true;
    order(value, frames);
}

void Attribute::order(float value, std::uint32_t frames) {
    m_target = value;
    m_order.store(std::bit_cast<std::uint64_t>(Order{value, frames}));
    m_lastSlide = idOf(m_number.fetch_add(1) + 1);
}

bool Attribute::slidePlayed(SlideId slide) {
    if (!m_sliding || slide != m_lastSlide) return false;
    m_sliding = false;
    return true;
}

void Attribute::adopt(const Attribute& former) {
    m_target = former.m_target;
    m_sliding = former.m_sliding;
    m_lastSlide = former.m_lastSlide;
}

void Attribute::settle() {
    if (!m_sliding) finishSlide();
}

Attribute::SlideId Attribute::finishSlide() {
    m_ramp.jumpTo(m_target);
    m_current = m_target;
    m_followed = m_number;
    m_finishing = false;
    return m_lastSlide;
}

void Attribute::follow() {
    const std::uint32_t number = m_number.load();
    if (number == m_followed) return;
    m_followed = number;
    m_slide = idOf(number);
    m_finishing = true;
    const auto order = std::bit_cast<Order>(m_order.load());
    m_ramp.moveTo(order.target, order.frames);
}

void Attribute::continueFrom(const Attribute& former) {
    m_ramp = former.m_ramp;
    m_slide = former.m_slide;
    m_finishing = former.m_finishing;
    m_followed = m_number.load();
    m_current = former.m_ramp.value();
}

void Attribute::startFrom(float value) {
    m_followed = m_number.load();
    m_finishing = false;
    m_ramp.jumpTo(value);
    m_ramp.moveTo(std::bit_cast<Order>(m_order.load()).target, smoothingFrames);
}

Attribute::SlideId Attribute::finished() {
    m_current.store(m_ramp.value(), std::memory_order_relaxed);
    if (!m_finishing || m_ramp.isMoving()) return 0;
    m_finishing = false;
    return m_slide;
}

} // namespace bass
