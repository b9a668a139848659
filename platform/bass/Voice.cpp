#include "platform/bass/Voice.h"

#include <algorithm>

namespace bass {
namespace {

/// A quarter of a second is collected before a voice that ran dry goes on.
constexpr std::size_t resumeFrames = sampleRate / 4;

} // namespace

void Voice::begin(bool softly) {
    fade_.jumpTo(softly ? 0.0F : 1.0F);
    fade_.moveTo(1.0F, declickFrames);
    fresh_ = true;
    ended_ = false;
    stalled_ = false;
    while (stretches_.front()) stretches_.pop();
    stretch_ = {0, ring.readCount()};
}

std::uint64_t Voice::heardCount(std::uint64_t deviceFrames) {
    const std::uint64_t mixed = ring.readCount();
    const Stretch* next = stretches_.front();
    bool begun = stretch_.at > 0;
    while (next && next->at <= deviceFrames) {
        stretch_ = *next;
        begun = true;
        stretches_.pop();
        next = stretches_.front();
    }
    if (!begun) return stretch_.count;
    const std::uint64_t limit = next ? next->count : mixed;
    return std::min(stretch_.count + (deviceFrames - stretch_.at), std::max(limit, stretch_.count));
}

std::size_t Voice::mix(std::span<float> out, std::uint64_t at, EventQueue& events) noexcept {
    if (ended_) return 0;
    volume.follow(fresh_);
    pan.follow(fresh_);
    const bool complete = isComplete; // before the ring is asked: what comes after it would be missed
    const std::size_t wanted = out.size() / channelCount;
    const std::size_t frames = framesToMix(wanted);
    if (frames > 0) {
        if (fresh_ || at != next_) (void)stretches_.push({at, ring.readCount()});
        fresh_ = false;
        next_ = at + frames;
    }
    const auto volumeLeft = volume.framesLeft();
    const auto panLeft = pan.framesLeft();
    mixFrames(out, frames);
    ring.consume(frames);
    if (ring.readable() < lowFrames) room_.wake();
    if (complete && ring.readable() == 0) {
        ended_ = events.push({Event::Kind::end, channel_, 0, at + frames});
    } else {
        advance(wanted - frames); // a slide goes on in silence
    }
    tell(Event::Kind::volumeSlide, volume, at + std::min<std::uint64_t>(volumeLeft, wanted), events);
    tell(Event::Kind::panSlide, pan, at + std::min<std::uint64_t>(panLeft, wanted), events);
    return frames;
}

std::size_t Voice::framesToMix(std::size_t wanted) noexcept {
    const bool complete = isComplete;
    const std::size_t there = ring.readable();
    fading_ = 0;
    if (stalled_) {
        if (!complete && there < resumeFrames) return 0;
        stalled_ = false;
        fade_.jumpTo(0.0F);
        fade_.moveTo(1.0F, declickFrames);
    }
    if (there >= wanted || complete) return std::min(there, wanted);
    stalled_ = true;
    underruns_.fetch_add(1);
    fading_ = std::min<std::uint64_t>(there, declickFrames);
    return there;
}

void Voice::mixFrames(std::span<float> out, std::size_t frames) noexcept {
    std::uint64_t count = ring.readCount();
    float* to = out.data();
    const std::size_t plain = frames - static_cast<std::size_t>(fading_);
    std::size_t done = 0;
    for (std::span<const float> run : ring.peek(frames)) {
        hand(run, count);
        count += run.size() / channelCount;
        while (!run.empty()) {
            if (done == plain && fading_ > 0) fade_.moveTo(0.0F, fading_);
            const std::size_t until = done < plain ? plain : frames;
            const std::size_t part = std::min((until - done) * channelCount, run.size());
            addRun(to, run.first(part));
            to += part;
            done += part / channelCount;
            run = run.subspan(part);
        }
    }
}

void Voice::hand(std::span<const float> run, std::uint64_t count) noexcept {
    const std::uint64_t end = count + run.size() / channelCount;
    if (end <= tapped_) return; // mixed a second time, after a rewind
    const std::uint64_t skipped = tapped_ > count ? tapped_ - count : 0;
    tapped_ = end;
    if (SampleTap* listener = tap.load())
        listener->tapped(run.subspan(static_cast<std::size_t>(skipped) * channelCount));
}

void Voice::addRun(float* out, std::span<const float> run) noexcept {
    const auto gains = [this] {
        const float gain = volume.value() * fade_.value();
        const float balance = pan.value();
        return std::pair{balance > 0 ? gain * (1 - balance) : gain, balance < 0 ? gain * (1 + balance) : gain};
    };
    std::size_t at = 0;
    while (at < run.size() && (volume.framesLeft() || pan.framesLeft() || fade_.framesLeft())) {
        advance(1);
        const auto [left, right] = gains();
        out[at] += run[at] * left;
        out[at + 1] += run[at + 1] * right;
        at += channelCount;
    }
    const auto [left, right] = gains();
    for (; at < run.size(); at += channelCount) {
        out[at] += run[at] * left;
        out[at + 1] += run[at + 1] * right;
    }
}

void Voice::advance(std::size_t frames) noexcept {
    volume.advance(frames);
    pan.advance(frames);
    fade_.advance(frames);
}

void Voice::tell(Event::Kind kind, Attribute& attribute, std::uint64_t at, EventQueue& events) noexcept {
    attribute.show();
    const std::uint32_t slide = attribute.finishedSlide();
    if (slide != 0 && events.push({kind, channel_, slide, at})) attribute.told();
}

} // namespace bass
