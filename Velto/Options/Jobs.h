#pragma once

#include "Velto/Options/App.h"
#include "Velto/Options/RecordingFiles.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <future>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

// Many recordings on many cores.

namespace VeltoTouch::Velto {

// --jobs N: how many recordings are worked on at the same time; one a core unless it is given.
CLI::Option* addJobs(App& app, std::size_t& target);

// Handles recordings as handleRecordings does, `jobs` at a time: `make(file)` returns a result, on any thread, and
// `take(file, result)` is called with it on the caller's thread, in the order of the files, so that what is printed is
// the same for any number of jobs. At most `jobs` results wait. What `make` or `take` throws is reported under the
// file's name. Returns the exit status.
template <class Make, class Take>
[[nodiscard]] int handleInOrder(const std::vector<std::string>& files, std::size_t jobs, const std::string& work,
                                const Make& make, const Take& take) {
    using Result = decltype(make(std::string()));
    std::deque<std::future<Result>> ahead; // of the files from the one in turn on
    std::size_t begun = 0;
    const auto begin = [&](std::launch policy) {
        ahead.push_back(std::async(policy, [&make, &next = files[begun]] { return make(next); }));
        ++begun;
    };
    const auto beginAhead = [&] {
        try {
            while (jobs > 1 && begun < files.size() && ahead.size() < jobs)
                begin(std::launch::async);
        } catch (const std::system_error&) { // no more threads: those that are there go on
        }
        if (ahead.empty())
            begin(std::launch::deferred);
    };
    return handleRecordings(files, work, [&](const std::string& file) {
        beginAhead();
        std::future<Result> next = std::move(ahead.front());
        ahead.pop_front();
        Result result = next.get();
        if (jobs > 1 && begun < files.size())
            beginAhead(); // works while this one is taken
        take(file, std::move(result));
    });
}

// The same for the recordings that paths stand for.
template <class Make, class Take>
[[nodiscard]] int forEachRecordingInOrder(const std::vector<std::string>& paths, std::size_t jobs,
                                          const std::string& work, const Make& make, const Take& take) {
    std::vector<std::string> files;
    const int status = findRecordings(paths, files);
    return std::max(status, handleInOrder(files, jobs, work, make, take));
}

} // namespace VeltoTouch::Velto
