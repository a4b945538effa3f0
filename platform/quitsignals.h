// SIGTERM, SIGINT and SIGHUP as requests to quit, delivered in the event loop.
#pragma once

#include <QObject>

#include <functional>
#include <memory>

class QSocketNotifier;

namespace platform {

class QuitSignals final : public QObject {
public:
    // Installs the handlers; false (with nothing installed) when it cannot.
    QuitSignals();
    bool install(std::function<void(int signal)> handler);
    // Puts the previous handlers back.
    void remove();
    ~QuitSignals() override;

private:
    std::unique_ptr<QSocketNotifier> notifier_;
    std::function<void(int)> handler_;
    bool installed_ = false;
};

} // namespace platform
