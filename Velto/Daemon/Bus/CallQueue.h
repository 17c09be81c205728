#pragma once

#include "Velto/Daemon/Bus/Handles.h"
#include "Velto/Daemon/Bus/Values.h"
#include "Velto/Daemon/EventLoop.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>

namespace VeltoTouch::Bus {

// Admits the calls of untrusted bus clients one by one, so that no client costs the others more than its share.
//
// The bus buffers what a client does not read, and once it buffers too much of ours it accepts nothing more from us,
// for any client. So every answer, errors and the library's own included, counts against its caller until the bus
// reports it as read. If the bus cannot report that, the count is cleared. The next call is that of the caller with the
// fewest unread bytes. A caller with `kMostUnread` must wait, its calls beyond `kMostOfOneCaller` are dropped without
// an answer (after 128 of them the bus accepts no more), and its waiting values give way to those of others. A call is
// admitted once the bus has taken all that was sent before, so that a gesture never waits behind a queue of answers.
//
// The loop's thread.
class CallQueue {
public:
    static constexpr std::size_t kMostOfOneCaller = 16;         // waiting; the bus bounds how many callers there are
    static constexpr std::size_t kMostWithValues = 16;          // waiting, of all callers: those that carry a value
    static constexpr std::size_t kLongestText = 256;            // bytes, of a path or a key
    static constexpr std::size_t kMostTexts = 3;                // a path, and two arguments
    static constexpr std::size_t kLargestValue = 65'536;        // bytes in its message
    static constexpr std::uint64_t kMostUnread = 32 << 10;      // bytes of one caller, before its last answer
    static constexpr std::uint64_t kMostUnreadOfAll = 64 << 20; // the bus keeps 127 MiB of ours

    // Takes the calls of a connection, which is closed before this is destroyed. `isBusy` returns whether a property is
    // being read or written: one at a time, while all other calls go on.
    CallQueue(EventLoop& loop, sd_bus* bus, std::function<bool()> isBusy);
    CallQueue(const CallQueue&) = delete;
    CallQueue& operator=(const CallQueue&) = delete;
    ~CallQueue();

    // Counts the value in an answer; the rest was counted when the call was admitted. Throws CallError if it is more
    // than the bus has room for.
    void countAnswer(sd_bus_message* call, std::uint64_t bytes);

private:
    using Clock = std::chrono::steady_clock;

    struct Waiting {
        BusMessage call;
        std::uint64_t number; // in the order of arrival
        bool isRequest;       // to read or write a property
        bool hasValue;
    };
    struct Caller {
        std::deque<Waiting> waiting;
        std::uint64_t unread = 0; // bytes
        bool hasCalled = false;   // since the bus was last asked
        Clock::time_point nextQuestion;
        Clock::duration pause = kShortestPause;
    };
    using Callers = std::map<std::string, Caller, std::less<>>;
    struct Handlers; // of the bus library

    static constexpr std::chrono::seconds kShortestPause{1};
    static constexpr std::chrono::seconds kLongestPause{32};

    // Returns what the library does with a call that has arrived: 1 to drop it, 0 to go on.
    int take(sd_bus_message* call);
    void queue(sd_bus_message* call, Caller& caller);
    [[nodiscard]] bool makeRoomForValue();
    void refuse(sd_bus_message* call, Caller& caller, const CallError& error);
    [[nodiscard]] Callers::iterator next();
    void letIn();
    void ask();
    void handleStatistics(sd_bus_message* reply);
    void forget(const std::string& caller);
    void add(Caller& caller, std::uint64_t bytes);

    sd_bus* const _bus;
    const std::function<bool()> _isBusy;
    Callers _callers;
    std::uint64_t _unreadOfAll = 0;
    std::uint64_t _lastNumber = 0;
    std::size_t _waitingWithValues = 0;
    BusMessage _letIn;       // The admitted call, until the library passes it to `take`.
    std::string _askedAbout; // the caller that the bus is being asked about; empty: none
    std::uint64_t _unreadThen = 0;
    EventSourceHandle _afterEachEvent;
};

} // namespace VeltoTouch::Bus
