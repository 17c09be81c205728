#include "Platform/Backend/LogQueue.h"

#include <algorithm>
#include <cstring>

namespace VeltoTouch {

void LogQueue::push(os_log_t log, os_log_type_t type, std::string_view text) noexcept {
    const std::string_view kept = text.substr(0, kLongestText);
    const Line line{.log = log,
                    .type = type,
                    .isCut = kept.size() < text.size(),
                    .length = static_cast<std::uint32_t>(kept.size()),
                    .time = std::chrono::system_clock::now()};
    const std::size_t needed = sizeof line + kept.size();
    bool isFirst = false;
    {
        const MutexLock guard(_lock);
        isFirst = _count == 0;
        while (_count == kMostLines || _end - _begin + needed > kRoom)
            dropOldest();
        if (_count == 0)
            _begin = _end = 0;
        write(&line, sizeof line);
        if (!kept.empty()) // memcpy needs a valid pointer even for 0 bytes
            write(kept.data(), kept.size());
        ++_count;
        _isDrained = false;
    }
    if (isFirst)
        _hasLines->signal();
}

bool LogQueue::take(Line& line, Text& text) noexcept {
    const MutexLock guard(_lock);
    if (_count == 0)
        return false;
    read(&line, sizeof line);
    read(text.data(), line.length);
    --_count;
    return true;
}

void LogQueue::wait() noexcept {
    {
        const MutexLock guard(_lock);
        _isDrained = _count == 0;
    }
    _hasLines->wait();
}

bool LogQueue::isDrained() noexcept {
    const MutexLock guard(_lock);
    return _isDrained;
}

std::uint64_t LogQueue::overrunCount() noexcept {
    const MutexLock guard(_lock);
    return _overrunCount;
}

void LogQueue::write(const void* bytes, std::size_t count) noexcept {
    const std::size_t place = _end % kRoom;
    const std::size_t beforeTheEdge = std::min(count, kRoom - place);
    std::memcpy(&_ring[place], bytes, beforeTheEdge);
    std::memcpy(&_ring[0], static_cast<const char*>(bytes) + beforeTheEdge, count - beforeTheEdge);
    _end += count;
}

void LogQueue::read(void* bytes, std::size_t count) noexcept {
    const std::size_t place = _begin % kRoom;
    const std::size_t beforeTheEdge = std::min(count, kRoom - place);
    std::memcpy(bytes, &_ring[place], beforeTheEdge);
    std::memcpy(static_cast<char*>(bytes) + beforeTheEdge, &_ring[0], count - beforeTheEdge);
    _begin += count;
}

void LogQueue::dropOldest() noexcept {
    Line line{};
    read(&line, sizeof line);
    _begin += line.length;
    --_count;
    ++_overrunCount;
}

} // namespace VeltoTouch
