#include "platform/bass/Attribute.h"

namespace bass {
namespace {

/// 5 ms at 44.1 kHz: too short to hear as a slide, long enough not to click.
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
    m_number.fetch_add(1);
}

float Attribute::get() const {
    return m_sliding ? m_current.load() : m_target;
}

bool Attribute::slideHeard(std::uint32_t slide) {
    if (!m_sliding || slide != m_number.load()) return false;
    m_sliding = false;
    return true;
}

void Attribute::follow(bool still) {
    const std::uint32_t number = m_number.load();
    if (number == m_followed) return;
    m_followed = number;
    m_finishing = true;
    const auto order = std::bit_cast<Order>(m_order.load());
    m_ramp.moveTo(order.target, still && order.frames == smoothingFrames ? 0 : order.frames);
}

std::uint32_t Attribute::finished() {
    m_current.store(m_ramp.value());
    if (!m_finishing || m_ramp.isMoving()) return 0;
    m_finishing = false;
    return m_followed;
}

} // namespace bass
