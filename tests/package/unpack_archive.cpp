// Unpacks the archive of an update as the program does: unpack_archive ARCHIVE FOLDER

#include <fcntl.h>
#include <sys/stat.h>

#include <atomic>
#include <cstdlib>
#include <iostream>

#include "platform/linux/update_archive.h"
#include "platform/posix/file_descriptor.h"

int main(int count, char** arguments) {
    using brimwatch::FileDescriptor;
    if (count != 3) {
        std::cerr << "usage: unpack_archive ARCHIVE FOLDER\n";
        return EXIT_FAILURE;
    }
    constexpr mode_t folderMode = 0755;
    ::mkdir(arguments[2], folderMode);
    const FileDescriptor archive(::open(arguments[1], O_RDONLY | O_CLOEXEC));
    const FileDescriptor folder(::open(arguments[2], O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::atomic<bool> isCancelled = false;
    if (!archive.isOpen() || !folder.isOpen() ||
        !brimwatch::unpackArchive(archive.get(), folder.get(), isCancelled)) {
        std::cerr << "The updates would refuse " << arguments[1] << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
