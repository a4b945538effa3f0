// The real implementations of the platform interfaces, installed for the run.
#pragma once

#include <memory>

class PlatformServices {
public:
    PlatformServices();
    ~PlatformServices();
    PlatformServices(const PlatformServices &) = delete;
    PlatformServices &operator=(const PlatformServices &) = delete;

private:
    struct Implementations;
    std::unique_ptr<Implementations> implementations_;
};
