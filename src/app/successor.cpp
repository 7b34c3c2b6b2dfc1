#include "app/successor.h"

#include <unistd.h>

#include <array>
#include <initializer_list>

namespace brimwatch {

void becomeSuccessor(const std::string& path, const sigset_t& defaultSignals) {
    for (const int signal : {SIGPIPE, SIGXFSZ}) {
        if (::sigismember(&defaultSignals, signal) != 1) continue;
        struct sigaction usual {};
        usual.sa_handler = SIG_DFL;
        ::sigaction(signal, &usual, nullptr);
    }
    std::string name = path;
    const std::array<char*, 2> arguments = {name.data(), nullptr};
    ::execv(path.c_str(), arguments.data());
}

}  // namespace brimwatch
