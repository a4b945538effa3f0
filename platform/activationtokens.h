// Tokens that let a program started or asked by the user bring its window
// forward, weighed by the window manager against the user's last input
// rather than forced.
#pragma once

#include "platform/service.h"

#include <QByteArray>

namespace platform {

class ActivationTokens {
public:
    virtual ~ActivationTokens() = default;
    // A new startup id for the program about to be asked; empty when there has
    // been no input to date it by.
    virtual QByteArray newToken() = 0;
};

// A new token from the implementation in use; empty without one.
inline QByteArray NewActivationToken() {
    return hasService<ActivationTokens>() ? service<ActivationTokens>().newToken() : QByteArray();
}

} // namespace platform
