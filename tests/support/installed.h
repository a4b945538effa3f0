// A platform double that is the implementation in use for its own lifetime:
// `Installed<platform::FakeAlerts, platform::Alerts> alerts;` in a fixture
// replaces a double and its guard.
#pragma once

#include "platform/service.h"

template <typename Double, typename Interface> class Installed : public Double {
public:
    Installed() : guard_(this) {}

private:
    platform::ScopedService<Interface> guard_;
};
