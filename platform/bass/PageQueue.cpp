#include "platform/bass/PageQueue.h"

#include <utility>

namespace bass {

void PageQueue::addHeader(Page page) {
    auto shared = std::make_shared<const Page>(std::move(page));
    const Lock lock(m_mutex);
    m_headers.push_back(std::move(shared));
}

void PageQueue::add(Page page) {
    auto shared = std::make_shared<const Page>(std::move(page));
    const Lock lock(m_mutex);
    m_bytes += shared->size();
    m_pages.push_back(std::move(shared));
    while (m_bytes > mostBehind) {
        m_bytes -= m_pages.front()->size();
        m_pages.pop_front();
        ++m_first;
    }
}

void PageQueue::end() {
    const Lock lock(m_mutex);
    m_ended = true;
}

bool PageQueue::hasEnded() const {
    const Lock lock(m_mutex);
    return m_ended;
}

void PageQueue::setBurst(std::size_t bytes) {
    const Lock lock(m_mutex);
    m_burst = bytes;
}

PageQueue::Reading PageQueue::read(Place& place) {
    const Lock lock(m_mutex);
    if (!place.joined) {
        // Headers are complete when a page follows them.
        if (m_pages.empty()) return {nullptr, m_ended};
        if (place.header < m_headers.size()) return {m_headers[place.header++], false};
        place.page = joiningPage(lock);
        place.joined = true;
    }
    if (isBehind(lock, place)) return {nullptr, true};
    const auto index = static_cast<std::size_t>(place.page - m_first);
    if (index == m_pages.size()) return {nullptr, m_ended};
    ++place.page;
    return {m_pages[index], false};
}

bool PageQueue::isTooFarBehind(const Place& place) const {
    const Lock lock(m_mutex);
    return isBehind(lock, place);
}

std::uint64_t PageQueue::joiningPage(const Lock& /*lock*/) const {
    std::size_t index = m_pages.size();
    std::size_t bytes = 0;
    while (index > 0 && bytes + m_pages[index - 1]->size() <= m_burst)
        bytes += m_pages[--index]->size();
    return m_first + index;
}

bool PageQueue::isBehind(const Lock& /*lock*/, const Place& place) const {
    return place.joined && place.page < m_first;
}

} // namespace bass
