#include "Velto/Daemon/SurfaceKeys.h"

#include <utility>

namespace VeltoTouch {

SurfaceKeys::SurfaceKeys(KeyOutput& output, const KeyTable& table, std::function<std::uint64_t()> deliveredReports,
                         std::function<void()> failureHandler)
    : _deliveredReports(std::move(deliveredReports)), _failureHandler(std::move(failureHandler)), _keys(output, table) {
}

template <class Work>
void SurfaceKeys::attempt(const Work& work) noexcept {
    const MutexLock guard(_lock);
    if (_failure)
        return;
    try {
        work();
    } catch (...) {
        _failure = std::current_exception();
        _failureHandler();
    }
}

std::uint16_t SurfaceKeys::handle(const Gesture& gesture) noexcept {
    std::uint16_t key = kNoKey;
    attempt([&]() VELTO_REQUIRES(_lock) { key = _keys.handle(gesture); });
    return key;
}

void SurfaceKeys::setTable(const KeyTable& table) noexcept {
    attempt([&]() VELTO_REQUIRES(_lock) { _keys.setTable(table); });
}

void SurfaceKeys::releaseIfSilent() noexcept {
    attempt([&]() VELTO_REQUIRES(_lock) {
        const std::uint64_t reports = _deliveredReports();
        if (std::exchange(_lastReports, reports) == reports)
            _keys.releaseAll();
    });
}

void SurfaceKeys::end() {
    const MutexLock guard(_lock);
    if (_failure)
        std::rethrow_exception(_failure);
    _keys.releaseAll();
}

} // namespace VeltoTouch
