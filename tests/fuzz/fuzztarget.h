// A fuzz target reads one input of the outside world's. Built for libFuzzer
// (KESTREL_LIBFUZZER) it is the fuzzer's entry point; built into the corpus
// replay test every target registers under the name of its corpus folder.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#ifdef KESTREL_LIBFUZZER
#define KESTREL_FUZZ_TARGET(name)                                                                  \
    extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
inline void FuzzCheckFailed(const char *condition, const char *file, int line) {
    std::fprintf(stderr, "%s:%d: the input breaks %s\n", file, line, condition);
    std::abort();
}
#else
using FuzzTarget = int (*)(const std::uint8_t *data, std::size_t size);
std::map<std::string, FuzzTarget> &FuzzTargets();
#define KESTREL_FUZZ_TARGET(name)                                                                  \
    static int name##Target(const std::uint8_t *data, std::size_t size);                           \
    [[maybe_unused]] static const bool name##Registered =                                          \
        (FuzzTargets()[#name] = name##Target, true);                                               \
    static int name##Target(const std::uint8_t *data, std::size_t size)
// The replay test fails the input at hand and goes on with the next.
void FuzzCheckFailed(const char *condition, const char *file, int line);
#endif

// A property every input keeps; to the fuzzer an input that breaks it is a crash.
#define FUZZ_CHECK(condition)                                                                      \
    ((condition) ? void() : FuzzCheckFailed(#condition, __FILE__, __LINE__))
