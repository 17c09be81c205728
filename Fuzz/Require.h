#pragma once

// A promise that a fuzzer watches: the process ends where it is broken, in every build.
inline void require(bool promise) {
    if (!promise)
        __builtin_trap();
}
