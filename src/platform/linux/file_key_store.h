// Keys as files, one for each, for machines that have no secret service.
//
// A file holds the bytes of its key as they are, belongs to its user and is readable by nobody
// else; it lies in a folder into which nobody else can write. A file that others may read or write,
// that is not the user's or is a link is refused with `inputOutput`, and the log tells why: what
// others may have seen is no secret any more. It can still be removed. Files are replaced as a
// whole and reach the disk before a call returns. There are no prompts. Main thread.
#pragma once

#include <cstdint>
#include <string>

#include "platform/key_store.h"
#include "support/file_system.h"

namespace brimwatch {

class FileKeyStore final : public KeyStore {
  public:
    // Nothing larger is a key.
    static constexpr std::size_t sizeLimit = 65'536;

    FileKeyStore(FileSystem& files, std::string folder, std::uint32_t userId);

    KeyStatus add(const KeyItem& item, const SecretBytes& value, KeyPrompt prompt) override;
    Match copyMatching(const KeyItem& item, KeyPrompt prompt) override;
    KeyStatus update(const KeyItem& item, const SecretBytes& value, KeyPrompt prompt) override;
    KeyStatus remove(const KeyItem& item, KeyPrompt prompt) override;

    // Where that item lies.
    std::string path(const KeyItem& item) const;

    // Whether there is any, usable or not.
    bool hasItems() const;

  private:
    KeyStatus check(const std::string& path) const;
    KeyStatus checkFolder() const;
    KeyStatus makeFolder() const;

    FileSystem& files_;
    std::string folder_;
    std::uint32_t userId_;
};

}  // namespace brimwatch
