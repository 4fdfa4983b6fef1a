#pragma once

// A broken invariant stops the fuzzer (and the corpus replay) like a crash.
inline void check(bool condition) {
    if (!condition) __builtin_trap();
}
