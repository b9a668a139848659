#include "platform/bass/Attribute.h"

namespace bass {

void Attribute::set(float value) {
    sliding_ = false;
    target_ = value;
    order_.publish({value, declickFrames, 0});
}

void Attribute::slide(float value, std::uint64_t frames) {
    if (++number_ == 0) ++number_;
    sliding_ = true;
    target_ = value;
    order_.publish({value, frames, number_});
}

bool Attribute::slideHeard(std::uint32_t number) {
    if (!sliding_ || number != number_) return false;
    sliding_ = false;
    return true;
}

void Attribute::follow(bool nothingSounds) {
    const Order* order = order_.take();
    if (!order) return;
    slide_ = order->slide;
    const bool atOnce = nothingSounds && slide_ == 0;
    ramp_.moveTo(order->target, atOnce ? 0 : order->frames);
}

} // namespace bass
