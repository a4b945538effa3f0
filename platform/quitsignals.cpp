#include "platform/quitsignals.h"

#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr int kQuitSignals[] = {SIGTERM, SIGINT, SIGHUP};
int signalPipe[2] = {-1, -1};
struct sigaction previousActions[3];

// Only async-signal-safe work here: the number goes through the pipe to the loop.
void OnQuitSignal(int signal) {
    const int savedErrno = errno;
    const unsigned char number = static_cast<unsigned char>(signal);
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[1], &number, 1);
    errno = savedErrno;
}

} // namespace

QuitSignals::QuitSignals() = default;

bool QuitSignals::install(std::function<void(int)> handler) {
    if (installed_)
        return true;
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, signalPipe) != 0)
        return false;
    handler_ = std::move(handler);
    notifier_ = std::make_unique<QSocketNotifier>(signalPipe[0], QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
        unsigned char number = 0;
        while (::read(signalPipe[0], &number, 1) == 1)
            handler_(number);
    });
    struct sigaction action {};
    action.sa_handler = OnQuitSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < std::size(kQuitSignals); ++i)
        ::sigaction(kQuitSignals[i], &action, &previousActions[i]);
    installed_ = true;
    return true;
}

void QuitSignals::remove() {
    if (!installed_)
        return;
    for (std::size_t i = 0; i < std::size(kQuitSignals); ++i)
        ::sigaction(kQuitSignals[i], &previousActions[i], nullptr);
    notifier_.reset();
    ::close(signalPipe[0]);
    ::close(signalPipe[1]);
    signalPipe[0] = signalPipe[1] = -1;
    installed_ = false;
}

QuitSignals::~QuitSignals() {
    remove();
}

} // namespace platform
