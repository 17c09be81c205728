#include "Serve/Bus/PropertyRequests.h"

#include "Pipeline/SettingKind.h"
#include "Shared/Util.h"

#include <utility>

namespace VeltoTouch::Bus {
namespace {

void checkKey(const std::string& key) {
    if (key.size() > PropertyRequests::kLongestKey)
        throw CallError(SD_BUS_ERROR_INVALID_ARGS, "the key is too long");
}

void checkSetting(const std::string& key, const Ref<Value>& value) {
    std::string rest = key;
    if (!Util::stripDomainFromKey(rest, "Pipeline"))
        return;
    const auto kind = settingKindOf(key);
    if (kind == Algs::SettingKind::Unknown)
        throw CallError(SD_BUS_ERROR_UNKNOWN_PROPERTY, "nothing knows this key");
    if (kind == Algs::SettingKind::ReadsNumber && as<Number>(value) == nullptr)
        throw CallError(SD_BUS_ERROR_INVALID_ARGS, "a number is wanted");
}

} // namespace

PropertyRequests::PropertyRequests(EventLoop& loop, ServiceProperties properties)
    : _loop(loop), _properties(std::move(properties)) {}

PropertyRequests::~PropertyRequests() {
    _isEnding = true;
    dispatch_sync(_queue.get(), [] {});
}

void PropertyRequests::get(const std::string& key, Answer answer) {
    checkKey(key);
    queue(std::move(answer), [this, key]() -> Outcome {
        if (Ref<Value> value = _properties.get(key))
            return value;
        return CallError(SD_BUS_ERROR_UNKNOWN_PROPERTY, "there is no value under this key");
    });
}

void PropertyRequests::set(const std::string& key, Ref<Value> value, Answer answer) {
    checkKey(key);
    checkSetting(key, value);
    queue(std::move(answer), [this, key, value = std::move(value)]() -> Outcome {
        if (_properties.set(key, value))
            return nullptr;
        return CallError(SD_BUS_ERROR_PROPERTY_READ_ONLY, "the device does not take this value");
    });
}

void PropertyRequests::queue(Answer answer, std::function<Outcome()> work) {
    if (_waiting.size() >= kMostWaiting)
        throw CallError(SD_BUS_ERROR_LIMITS_EXCEEDED, "too many requests are waiting");
    const std::uint64_t number = ++_lastNumber;
    _waiting.emplace(number, std::move(answer));
    dispatch_async(_queue.get(), [this, number, work = std::move(work)] {
        if (!_isEnding)
            _loop.post([this, number, outcome = work()] { deliver(number, outcome); });
    });
}

void PropertyRequests::deliver(std::uint64_t number, const Outcome& outcome) {
    const auto waiting = _waiting.extract(number);
    waiting.mapped()(outcome);
}

} // namespace VeltoTouch::Bus
