#include "Serve/Bus/PropertyRequests.h"

#include "Pipeline/Properties.h"

#include <algorithm>
#include <utility>

namespace VeltoTouch::Bus {
namespace {

void checkKey(const std::string& key) {
    if (key.size() > PropertyRequests::kLongestKey)
        throw CallError(SD_BUS_ERROR_INVALID_ARGS, "the key is too long");
}

// The value that a setting is written with. A number out of its range is passed on: the service reads it in its way.
Ref<Value> checkedSetting(const std::string& key, Ref<Value> value) {
    switch (judgeWrite(key, value.get()).verdict) {
    case Judgement::Verdict::ReadOnly:
    case Judgement::Verdict::Unknown:
        throw CallError(SD_BUS_ERROR_UNKNOWN_PROPERTY, "nothing knows this key");
    case Judgement::Verdict::NoNumber:
        throw CallError(SD_BUS_ERROR_INVALID_ARGS, "a number is wanted");
    default:
        break;
    }
    const auto setting = settingUnder(key);
    return setting && setting->row.is<SettingRow::Action>() ? makeRef<Null>() : std::move(value);
}

} // namespace

PropertyRequests::PropertyRequests(EventLoop& loop, ServiceProperties properties)
    : _loop(loop), _properties(std::move(properties)) {}

PropertyRequests::~PropertyRequests() {
    _isEnding = true;
    dispatch_sync(_queue.get(), [] {});
}

void PropertyRequests::get(const std::string& caller, const std::string& key, Answer answer) {
    checkKey(key);
    const auto read = [this, key]() -> Outcome {
        if (Ref<Value> value = _properties.get(key))
            return value;
        return CallError(SD_BUS_ERROR_UNKNOWN_PROPERTY, "there is no value under this key");
    };
    queue(kMostWaiting, {.caller = caller, .work = read, .answer = std::move(answer)});
}

void PropertyRequests::set(const std::string& caller, const std::string& key, Ref<Value> value, Answer answer) {
    checkKey(key);
    const auto write = [this, key, value = checkedSetting(key, std::move(value))]() -> Outcome {
        if (_properties.set(key, value))
            return nullptr;
        return CallError(SD_BUS_ERROR_PROPERTY_READ_ONLY, "the device does not take this value");
    };
    queue(kMostWaitingToWrite, {.caller = caller, .work = write, .answer = std::move(answer)});
}

void PropertyRequests::queue(std::size_t mostWaiting, Request request) {
    const auto ofThisCaller = std::ranges::count(_waiting, request.caller, &Request::caller);
    if (_waiting.size() >= mostWaiting || static_cast<std::size_t>(ofThisCaller) >= kMostOfOneCaller)
        throw CallError(SD_BUS_ERROR_LIMITS_EXCEEDED, "too many requests are waiting");
    _waiting.push_back(std::move(request));
    if (_waiting.size() == 1)
        begin();
}

void PropertyRequests::begin() {
    dispatch_async(_queue.get(), [this, work = _waiting.front().work] {
        if (!_isEnding)
            _loop.post([this, outcome = work()] { end(outcome); });
    });
}

void PropertyRequests::end(const Outcome& outcome) {
    const Request request = std::move(_waiting.front());
    _waiting.pop_front();
    request.answer(outcome);
    if (!_waiting.empty())
        begin();
}

} // namespace VeltoTouch::Bus
