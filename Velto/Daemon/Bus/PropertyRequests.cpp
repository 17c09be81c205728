#include "Velto/Daemon/Bus/PropertyRequests.h"

#include "Plugin/Pipeline/Properties.h"
#include "Velto/Daemon/Bus/Replies.h"

#include <utility>

namespace VeltoTouch::Bus {
namespace {

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

// What the work returns, or throws.
PropertyRequests::Outcome outcomeOf(const std::function<PropertyRequests::Outcome()>& work) {
    PropertyRequests::Outcome outcome;
    attempt([&] { outcome = work(); }, [&](const CallError& error) { outcome = error; });
    return outcome;
}

} // namespace

PropertyRequests::PropertyRequests(EventLoop& loop, ServiceProperties properties)
    : _loop(loop), _properties(std::move(properties)) {}

PropertyRequests::~PropertyRequests() {
    dispatch_sync(_queue.get(), [] {});
}

void PropertyRequests::get(const std::string& key, Answer answer) {
    const auto read = [this, key]() -> Outcome {
        if (Ref<Value> value = _properties.get(key))
            return value;
        return CallError(SD_BUS_ERROR_UNKNOWN_PROPERTY, kNoValue);
    };
    begin(read, std::move(answer));
}

void PropertyRequests::set(const std::string& key, Ref<Value> value, Answer answer) {
    const auto write = [this, key, value = checkedSetting(key, std::move(value))]() -> Outcome {
        if (_properties.set(key, value))
            return nullptr;
        return CallError(SD_BUS_ERROR_PROPERTY_READ_ONLY, kValueNotTaken);
    };
    begin(write, std::move(answer));
}

void PropertyRequests::begin(std::function<Outcome()> work, Answer answer) {
    dispatch_async(_queue.get(), [this, work = std::move(work)] {
        _loop.post([this, outcome = outcomeOf(work)] { std::exchange(_answer, nullptr)(outcome); });
    });
    _answer = std::move(answer); // if the request is queued; this thread, the loop's, answers it later
}

} // namespace VeltoTouch::Bus
