#include "platform/posix/ignored_signals.h"

#include <initializer_list>

namespace brimwatch {

sigset_t ignoreWriteSignals() {
    sigset_t formerlyDefault;
    ::sigemptyset(&formerlyDefault);
    for (const int signal : {SIGPIPE, SIGXFSZ}) {
        struct sigaction ignore {};
        struct sigaction former {};
        ignore.sa_handler = SIG_IGN;
        if (::sigaction(signal, &ignore, &former) == 0 && former.sa_handler == SIG_DFL) {
            ::sigaddset(&formerlyDefault, signal);
        }
    }
    return formerlyDefault;
}

}  // namespace brimwatch
