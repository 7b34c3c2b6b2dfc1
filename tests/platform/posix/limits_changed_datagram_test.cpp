#include "platform/posix/limits_changed_datagram.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>

#include "harness/environment_list.h"
#include "harness/temporary_folder.h"
#include "platform/posix/file_descriptor.h"

namespace brimwatch {
namespace {

FileDescriptor listenAt(const std::string& path) {
    FileDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::copy(path.begin(), path.end(), &address.sun_path[0]);
    EXPECT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    return socket;
}

int datagramsAt(const FileDescriptor& socket) {
    int count = 0;
    char byte = 0;
    while (::recv(socket.get(), &byte, 1, 0) == 0)
        ++count;
    return count;
}

TEST(LimitsChangedDatagram, ReachesTheSocketInTheRuntimeFolder) {
    const test::TemporaryFolder folder;
    const test::EnvironmentList environment = {{"XDG_RUNTIME_DIR", folder.path()}};
    EXPECT_EQ(limitsChangedSocket(environment.view()),
              folder.file("net.quillmoor.brimwatch.limitsChanged"));
    const FileDescriptor socket = listenAt(folder.file("net.quillmoor.brimwatch.limitsChanged"));
    postLimitsChanged(environment.view());
    EXPECT_EQ(datagramsAt(socket), 1);
}

TEST(LimitsChangedDatagram, IsDroppedWhenTheSocketIsFull) {
    const test::TemporaryFolder folder;
    const test::EnvironmentList environment = {{"XDG_RUNTIME_DIR", folder.path()}};
    const FileDescriptor socket = listenAt(folder.file("net.quillmoor.brimwatch.limitsChanged"));
    for (int count = 0; count < 10'000; ++count)
        postLimitsChanged(environment.view());
    EXPECT_GE(datagramsAt(socket), 1);
}

TEST(LimitsChangedDatagram, IsDroppedWhenNobodyListens) {
    const test::TemporaryFolder folder;
    test::EnvironmentList environment = {{"XDG_RUNTIME_DIR", folder.path()}};
    postLimitsChanged(environment.view());
    test::writeFile(folder.file("net.quillmoor.brimwatch.limitsChanged"), "no socket");
    postLimitsChanged(environment.view());
    EXPECT_EQ(test::readFile(folder.file("net.quillmoor.brimwatch.limitsChanged")), "no socket");
}

TEST(LimitsChangedDatagram, IsDroppedWhenTheListenerHasGone) {
    const test::TemporaryFolder folder;
    const test::EnvironmentList environment = {{"XDG_RUNTIME_DIR", folder.path()}};
    const std::string path = folder.file("net.quillmoor.brimwatch.limitsChanged");
    listenAt(path).close();
    postLimitsChanged(environment.view());
    EXPECT_TRUE(test::exists(path));
}

TEST(LimitsChangedDatagram, NeedsAnAbsoluteRuntimeFolderOfAUsualLength) {
    EXPECT_EQ(limitsChangedSocket(test::EnvironmentList{}.view()), std::nullopt);
    for (const std::string& folder : {std::string(), std::string("relative")}) {
        EXPECT_EQ(limitsChangedSocket(test::EnvironmentList{{"XDG_RUNTIME_DIR", folder}}.view()),
                  std::nullopt);
    }
    postLimitsChanged(
        test::EnvironmentList{{"XDG_RUNTIME_DIR", "/" + std::string(300, 'x')}}.view());
}

}  // namespace
}  // namespace brimwatch
