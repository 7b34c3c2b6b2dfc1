// The listening end of the broadcast of limits_changed_datagram.h.
//
// Its file is for the user alone (mode 0600) and goes with it, unless the name has become another
// file's by then. Nothing blocks; the descriptor is closed on exec.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/posix/file_descriptor.h"
#include "support/file_system.h"

namespace brimwatch {

class LimitsChangedSocket {
  public:
    // In place of a socket that nobody listens at any more, as a process that was killed leaves it.
    // What else has the name stays: where somebody listens, or where it is no socket, this is
    // `std::errc::address_in_use`. Of several processes that bind at once one succeeds.
    static FileResult<std::unique_ptr<LimitsChangedSocket>> bind(const std::string& path);

    LimitsChangedSocket(const LimitsChangedSocket&) = delete;
    LimitsChangedSocket& operator=(const LimitsChangedSocket&) = delete;
    ~LimitsChangedSocket();

    // Can be read when a datagram waits.
    int descriptor() const { return socket_.get(); }

    // Takes the datagrams that wait, but no more than that, so that it ends while others go on
    // sending. Tells how many there were.
    static constexpr std::size_t mostAtOnce = 1000;
    FileResult<std::size_t> drain() const;

  private:
    struct FileIdentity {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;

        bool operator==(const FileIdentity&) const = default;
    };

    LimitsChangedSocket(std::string path, FileDescriptor socket);
    static FileIdentity identity(const std::string& path);

    std::string path_;
    FileDescriptor socket_;
    FileIdentity file_;
};

}  // namespace brimwatch
