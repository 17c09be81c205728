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

// Lets calls of untrusted bus clients in one by one, so that none costs the others more than its share.
//
// The bus keeps what a client does not read, and when it keeps too much of ours, it takes nothing more from us, for
// anybody. So every answer, an error and the library's own included, counts against its caller until the bus says that
// the caller has read it (or can't say). Among the callers with something waiting, the one with the fewest bytes unread
// is next. One with `kMostUnread` has to wait, and what it asks for beyond `kMostOfOneCaller` is dropped without an
// answer: after 128 such calls the bus takes no more of them. Its values give way to others' as well. A call is let in
// when the bus has taken all that was sent before: a gesture never stands behind a queue of answers.
//
// On the loop's thread.
class CallQueue {
public:
    static constexpr std::size_t kMostOfOneCaller = 16; // waiting; the bus bounds how many callers there are
    static constexpr std::size_t kMostWithValues = 16;  // waiting, of all callers: those that carry a value
    static constexpr std::size_t kLongestText = 256;    // bytes, of a path or a key
    static constexpr std::size_t kMostTexts = 3;        // a path, and two arguments
    static constexpr std::size_t kLargestValue = 65'536;
    static constexpr std::uint64_t kMostUnread = 32 << 10;      // bytes of one caller, before its last answer
    static constexpr std::uint64_t kMostUnreadOfAll = 64 << 20; // the bus keeps 127 MiB of ours

    // Takes the calls of a connection, which is closed before this goes. `isBusy`: whether a property is being read or
    // written; there is one at a time, while all other calls go on.
    CallQueue(EventLoop& loop, sd_bus* bus, std::function<bool()> isBusy);
    CallQueue(const CallQueue&) = delete;
    CallQueue& operator=(const CallQueue&) = delete;
    ~CallQueue();

    // Counts the value in an answer; all else was counted as the call was let in. Throws CallError if it is more than
    // the bus has room for.
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

    // What the library is to do with a call that has come.
    int take(sd_bus_message* call);
    void queue(sd_bus_message* call, Caller& caller);
    [[nodiscard]] bool makeRoomForValue();
    void refuse(sd_bus_message* call, Caller& caller, const CallError& error);
    [[nodiscard]] Callers::iterator next();
    void letIn();
    void ask();
    void told(sd_bus_message* reply);
    void forget(const std::string& caller);
    void add(Caller& caller, std::uint64_t bytes);

    sd_bus* const _bus;
    const std::function<bool()> _isBusy;
    Callers _callers;
    std::uint64_t _unreadOfAll = 0;
    std::uint64_t _lastNumber = 0;
    std::size_t _waitingWithValues = 0;
    BusMessage _letIn;       // until the library has it again
    std::string _askedAbout; // the caller that the bus is being asked about; empty: none
    std::uint64_t _unreadThen = 0;
    EventSourceHandle _afterEachEvent;
};

} // namespace VeltoTouch::Bus
