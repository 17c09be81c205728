#include "Velto/Daemon/Bus/CallQueue.h"

#include "Velto/Daemon/Bus/Names.h"
#include "Velto/Daemon/Bus/Replies.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <optional>
#include <string_view>
#include <system_error>
#include <tuple>
#include <utility>

#include <fmt/format.h>

namespace VeltoTouch::Bus {
namespace {

constexpr const char* kBus = "org.freedesktop.DBus";
constexpr std::uint64_t kAnswerBytes = 256;          // of an error, or of an answer without its value
constexpr std::uint64_t kLibrarysAnswerBytes = 4096; // of all properties, or of the description of an object
constexpr std::uint64_t kMostUnsentErrors = 16;
constexpr std::uint64_t kAskedAt = CallQueue::kMostUnread / 2; // one that reads never gets to the bound

// Whether a call is one of a method of the surface's interface.
bool isCallOf(sd_bus_message* call, std::string_view method) {
    const char* interface = sd_bus_message_get_interface(call);
    return (interface == nullptr || std::string_view(interface) == kInterface) &&
           sd_bus_message_get_member(call) == method;
}

bool isWrite(sd_bus_message* call) { return isCallOf(call, kSetProperty); }

bool isRequest(sd_bus_message* call) {
    return isWrite(call) || isCallOf(call, kGetProperty) || isCallOf(call, kGetPublicProperty);
}

// Whether anything comes of a call.
bool hasEffect(sd_bus_message* call) {
    return sd_bus_message_get_expect_reply(call) > 0 || isWrite(call) || isCallOf(call, kReload);
}

bool isNext(sd_bus_message* call, char type) {
    char next = 0;
    return checked(sd_bus_message_peek_type(call, &next, nullptr), "call") > 0 && next == type;
}

// Whether a call carries a value: one that writes a property may. Throws CallError for anything else that has no bound,
// which may not wait.
bool checkArguments(sd_bus_message* call) {
    std::size_t texts = 0;
    const auto check = [&](const char* text) {
        if (std::strlen(text) > CallQueue::kLongestText)
            throw CallError(SD_BUS_ERROR_INVALID_ARGS, "the key is too long");
        if (++texts > CallQueue::kMostTexts)
            throw CallError(SD_BUS_ERROR_INVALID_ARGS, "no such arguments are taken");
    };
    check(sd_bus_message_get_path(call));
    const char* text = nullptr;
    while (isNext(call, SD_BUS_TYPE_STRING)) {
        checked(sd_bus_message_read_basic(call, SD_BUS_TYPE_STRING, &text), "call");
        check(text);
    }
    const bool hasValue = isWrite(call) && isNext(call, SD_BUS_TYPE_VARIANT);
    if (hasValue)
        std::ignore = readVariant(call, CallQueue::kLargestValue);
    if (sd_bus_message_at_end(call, 1) == 0)
        throw CallError(SD_BUS_ERROR_INVALID_ARGS, "no such arguments are taken");
    return hasValue;
}

// Reads how many bytes the bus keeps for a client. Throws std::system_error for a reply of another form.
std::uint64_t readOutgoingBytes(sd_bus_message* statistics) {
    checked(sd_bus_message_enter_container(statistics, SD_BUS_TYPE_ARRAY, "{sv}"), "statistics");
    while (checked(sd_bus_message_enter_container(statistics, SD_BUS_TYPE_DICT_ENTRY, "sv"), "statistics") > 0) {
        const char* name = nullptr;
        checked(sd_bus_message_read(statistics, "s", &name), "statistics");
        if (std::string_view(name) == "OutgoingBytes") {
            std::uint32_t bytes = 0;
            checked(sd_bus_message_read(statistics, "v", "u", &bytes), "statistics");
            return bytes;
        }
        checked(sd_bus_message_skip(statistics, "v"), "statistics");
        checked(sd_bus_message_exit_container(statistics), "statistics");
    }
    return 0;
}

// Returns how many bytes the bus keeps for a client, or nothing if it cannot say.
std::optional<std::uint64_t> outgoingBytes(sd_bus_message* statistics) {
    if (sd_bus_message_is_method_error(statistics, nullptr) > 0)
        return std::nullopt;
    try {
        return readOutgoingBytes(statistics);
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

} // namespace

// Nothing is thrown through the library. What may fail is memory alone; the call then goes without an answer.
struct CallQueue::Handlers {
    template <class Step>
    static int with(void* queue, const Step& step) noexcept {
        try {
            return step(*static_cast<CallQueue*>(queue));
        } catch (const std::exception&) {
            return 1;
        }
    }
    static int came(sd_bus_message* message, void* queue, sd_bus_error* /*error*/) {
        return with(queue, [&](CallQueue& calls) {
            return sd_bus_message_is_method_call(message, nullptr, nullptr) > 0 ? calls.take(message) : 0;
        });
    }
    static int eventHappened(sd_event_source* /*source*/, void* queue) {
        return with(queue, [](CallQueue& calls) {
            calls.letIn();
            calls.ask();
            return 0;
        });
    }
    static int handleStatistics(sd_bus_message* reply, void* queue, sd_bus_error* /*error*/) {
        return with(queue, [&](CallQueue& calls) {
            calls.handleStatistics(reply);
            return 1;
        });
    }
    static int hasGone(sd_bus_message* signal, void* queue, sd_bus_error* /*error*/) {
        return with(queue, [&](CallQueue& calls) {
            const char* name = nullptr;
            if (sd_bus_message_read(signal, "s", &name) > 0)
                calls.forget(name);
            return 0;
        });
    }
};

CallQueue::CallQueue(EventLoop& loop, sd_bus* bus, std::function<bool()> isBusy)
    : _bus(bus), _isBusy(std::move(isBusy)) {
    checked(sd_bus_add_filter(bus, nullptr, Handlers::came, this), "calls");
    const std::string rule = fmt::format("type='signal',sender='{}',member='NameOwnerChanged',arg2=''", kBus);
    checked(sd_bus_add_match_async(bus, nullptr, rule.c_str(), Handlers::hasGone, nullptr, this), "calls");
    const auto make = [&](sd_event_source** source) {
        return sd_event_add_post(loop.handle(), source, Handlers::eventHappened, this);
    };
    _afterEachEvent = madeBy<EventSourceHandle>(make, "calls");
}

CallQueue::~CallQueue() = default;

void CallQueue::countAnswer(sd_bus_message* call, std::uint64_t bytes) {
    if (bytes > kMostUnread && _unreadOfAll + bytes > kMostUnreadOfAll)
        throw CallError(SD_BUS_ERROR_LIMITS_EXCEEDED, "too many answers are on their way");
    if (const auto found = _callers.find(callerOf(call)); found != _callers.end())
        add(found->second, bytes);
}

int CallQueue::take(sd_bus_message* call) {
    if (call != _letIn.get()) {
        queue(call, _callers[callerOf(call)]);
        return 1;
    }
    _letIn.reset();
    add(_callers[callerOf(call)], isRequest(call) ? kAnswerBytes : kLibrarysAnswerBytes);
    return 0;
}

void CallQueue::queue(sd_bus_message* call, Caller& caller) {
    if (!hasEffect(call))
        return;
    caller.hasCalled = true;
    const auto wait = [&] {
        const bool hasValue = checkArguments(call);
        if (caller.waiting.size() >= kMostOfOneCaller || (hasValue && !makeRoomForValue()))
            throw CallError(SD_BUS_ERROR_LIMITS_EXCEEDED, "too many requests are waiting");
        caller.waiting.push_back({.call = BusMessage(sd_bus_message_ref(call)),
                                  .number = ++_lastNumber,
                                  .isRequest = isRequest(call),
                                  .hasValue = hasValue});
        _waitingWithValues += hasValue ? 1 : 0;
    };
    attempt(wait, [&](const CallError& error) { refuse(call, caller, error); });
}

// Whether one more value may wait. Where there is no room, those of callers that do not read go without an answer.
bool CallQueue::makeRoomForValue() {
    for (auto it = _callers.begin(); _waitingWithValues >= kMostWithValues && it != _callers.end(); ++it) {
        if (it->second.unread >= kMostUnread)
            _waitingWithValues -= std::erase_if(it->second.waiting, std::mem_fn(&Waiting::hasValue));
    }
    return _waitingWithValues < kMostWithValues;
}

void CallQueue::refuse(sd_bus_message* call, Caller& caller, const CallError& error) {
    if (caller.unread >= kMostUnread || unsentOn(_bus) >= kMostUnsentErrors)
        return;
    add(caller, kAnswerBytes);
    sendError(call, error);
}

// Whose call is next: that of the caller with the fewest bytes unread, or the one that came first.
CallQueue::Callers::iterator CallQueue::next() {
    const auto rank = [](const Caller& caller) { return std::pair(caller.unread, caller.waiting.front().number); };
    const bool isBusy = _isBusy();
    auto next = _callers.end();
    for (auto it = _callers.begin(); it != _callers.end(); ++it) {
        const Caller& caller = it->second;
        const bool canGo =
            !caller.waiting.empty() && caller.unread < kMostUnread && !(isBusy && caller.waiting.front().isRequest);
        if (canGo && (next == _callers.end() || rank(caller) < rank(next->second)))
            next = it;
    }
    return next;
}

void CallQueue::letIn() {
    if (_letIn || unsentOn(_bus) > 0)
        return;
    const auto found = next();
    if (found == _callers.end())
        return;
    Caller& caller = found->second;
    Waiting waiting = std::move(caller.waiting.front());
    caller.waiting.pop_front();
    _waitingWithValues -= waiting.hasValue ? 1 : 0;
    if (sd_bus_enqueue_for_read(_bus, waiting.call.get()) >= 0)
        _letIn = std::move(waiting.call);
}

// One question at a time, about callers that go on calling. One that has not read is asked about ever less often.
void CallQueue::ask() {
    if (!_askedAbout.empty() || unsentOn(_bus) > 0)
        return;
    const auto isDue = [now = Clock::now()](const Caller& caller) {
        return caller.unread >= kAskedAt && (caller.hasCalled || !caller.waiting.empty()) && caller.nextQuestion <= now;
    };
    auto next = _callers.end();
    for (auto it = _callers.begin(); it != _callers.end(); ++it) {
        if (isDue(it->second) && (next == _callers.end() || it->second.nextQuestion < next->second.nextQuestion))
            next = it;
    }
    if (next == _callers.end())
        return;
    if (sd_bus_call_method_async(_bus, nullptr, kBus, "/org/freedesktop/DBus", "org.freedesktop.DBus.Debug.Stats",
                                 "GetConnectionStats", Handlers::handleStatistics, this, "s", next->first.c_str()) < 0)
        return;
    _askedAbout = next->first;
    _unreadThen = next->second.unread;
    next->second.hasCalled = false;
}

void CallQueue::handleStatistics(sd_bus_message* reply) {
    const auto found = _callers.find(std::exchange(_askedAbout, {}));
    if (found == _callers.end())
        return;
    Caller& caller = found->second;
    const std::optional<std::uint64_t> outgoing = outgoingBytes(reply);
    const std::uint64_t kept = std::min(outgoing.value_or(0), _unreadThen);
    _unreadOfAll -= _unreadThen - kept;
    caller.unread -= _unreadThen - kept;
    const bool reads = kept < kAskedAt;
    caller.nextQuestion = outgoing && reads ? Clock::time_point() : Clock::now() + caller.pause;
    caller.pause = reads ? kShortestPause : std::min<Clock::duration>(2 * caller.pause, kLongestPause);
}

void CallQueue::forget(const std::string& caller) {
    const auto found = _callers.find(caller);
    if (found == _callers.end())
        return;
    _unreadOfAll -= found->second.unread;
    _waitingWithValues -= static_cast<std::size_t>(std::ranges::count(found->second.waiting, true, &Waiting::hasValue));
    _callers.erase(found);
}

void CallQueue::add(Caller& caller, std::uint64_t bytes) {
    caller.unread += bytes;
    _unreadOfAll += bytes;
}

} // namespace VeltoTouch::Bus
