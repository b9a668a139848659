#include "platform/bass/sharing/PageQueue.h"

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

void PageQueue::setName(std::string name) {
    const Lock lock(m_mutex);
    m_name = std::move(name);
}

std::string PageQueue::name() const {
    const Lock lock(m_mutex);
    return m_name;
}

PageQueue::Reading PageQueue::read(Place& place) const {
    const Lock lock(m_mutex);
    Reading reading;
    if (m_pages.empty()) { // headers are complete when a page follows them
        reading.leave = m_ended;
        return reading;
    }
    if (!place.joined) place = {true, m_headers.size(), joiningPage(lock)};
    if (place.page < m_first) {
        reading.leave = true;
        return reading;
    }
    const auto put = [&](const auto& from, std::size_t index) {
        while (reading.count < Reading::most && index < from.size())
            reading.pages[reading.count++] = from[index++];
    };
    put(m_headers, m_headers.size() - place.headersLeft);
    put(m_pages, static_cast<std::size_t>(place.page - m_first));
    reading.leave = m_ended && reading.count == 0;
    return reading;
}

std::uint64_t PageQueue::joiningPage(const Lock& /*lock*/) const {
    std::size_t index = m_pages.size();
    std::size_t bytes = 0;
    while (index > 0 && bytes + m_pages[index - 1]->size() <= m_burst)
        bytes += m_pages[--index]->size();
    return m_first + index;
}

} // namespace bass
