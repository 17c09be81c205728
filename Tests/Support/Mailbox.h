#pragma once

#include "Platform/Dispatch.h"
#include "Platform/FileDescriptor.h"
#include "Platform/Linux/RunLoop.h"
#include "Platform/Mutex.h"

#include <cerrno>
#include <deque>
#include <functional>
#include <string_view>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace VeltoTouch::Tests {

// Hands items from any thread to a source of a run loop, in order. A byte in a pipe for each item makes the source
// ready; the end of the pipe takes the source out of its mode once the items are handed on.
template <class Item>
class Mailbox {
public:
    using Handler = std::function<void(const Item& item)>;

    Mailbox() {
        int ends[2]{};
        if (::pipe2(ends, O_CLOEXEC) != 0)
            throw std::system_error(errno, std::generic_category(), "test mailbox");
        _readEnd = FileDescriptor(ends[0]);
        _writeEnd = FileDescriptor(ends[1]);
    }

    // A source of the calling thread's loop that calls the handler with one item after the other. The mailbox must
    // outlive it. An empty source where the mailbox is closed.
    [[nodiscard]] RunLoopSource open(RunLoop& loop, std::string_view mode, Handler handler) {
        if (const MutexLock guard(_lock); !_writeEnd.isOpen())
            return {};
        const auto readable = [this, handler = std::move(handler)] {
            const Letter letter = take();
            handler(letter.item);
            if (letter.handled)
                letter.handled->signal();
        };
        return loop.addDescriptor(mode, _readEnd.get(), readable, [] {});
    }

    // Any thread; returns at once. `handled`, if any, is signalled when the handler has returned. Once the mailbox is
    // closed the item is dropped; the result is false then.
    bool post(Item item, Ref<DispatchSemaphore> handled = nullptr) {
        const MutexLock guard(_lock);
        if (!_writeEnd.isOpen())
            return false;
        _letters.push_back({std::move(item), std::move(handled)});
        return ::write(_writeEnd.get(), "", 1) == 1;
    }

    void close() {
        const MutexLock guard(_lock);
        const FileDescriptor closed = std::move(_writeEnd);
    }

private:
    struct Letter {
        Item item;
        Ref<DispatchSemaphore> handled;
    };

    [[nodiscard]] Letter take() {
        const MutexLock guard(_lock);
        char signal = 0;
        (void)!::read(_readEnd.get(), &signal, 1);
        Letter letter = std::move(_letters.front());
        _letters.pop_front();
        return letter;
    }

    FileDescriptor _readEnd;
    Mutex _lock;
    FileDescriptor _writeEnd VELTO_GUARDED_BY(_lock); // none once it is closed
    std::deque<Letter> _letters VELTO_GUARDED_BY(_lock);
};

} // namespace VeltoTouch::Tests
