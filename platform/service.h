// One slot per platform interface, holding the implementation in use.
//
// main() installs the real implementations; tests install doubles for the span
// of a test with ScopedService. Code written against an interface asks for it
// with platform::service<Interface>().
#pragma once

#include <QtGlobal>

#include <typeinfo>

namespace platform {

template <typename Interface> Interface *&serviceSlot() {
    static Interface *slot = nullptr;
    return slot;
}

template <typename Interface> Interface &service() {
    Interface *implementation = serviceSlot<Interface>();
    if (implementation == nullptr)
        qFatal("no implementation installed for %s", typeid(Interface).name());
    return *implementation;
}

template <typename Interface> bool hasService() {
    return serviceSlot<Interface>() != nullptr;
}

template <typename Interface> void install(Interface *implementation) {
    serviceSlot<Interface>() = implementation;
}

// Installs an implementation for the life of the guard and puts the previous one back.
template <typename Interface> class ScopedService {
public:
    explicit ScopedService(Interface *implementation) : previous_(serviceSlot<Interface>()) {
        install(implementation);
    }
    ~ScopedService() { install(previous_); }
    ScopedService(const ScopedService &) = delete;
    ScopedService &operator=(const ScopedService &) = delete;

private:
    Interface *previous_;
};

} // namespace platform
