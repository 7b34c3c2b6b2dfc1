#include "platform/linux/file_key_store.h"

#include <QLoggingCategory>
#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/posix/folders.h"
#include "support/atomic_file.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

Q_LOGGING_CATEGORY(keysLog, "net.quillmoor.brimwatch.mac.keys")

constexpr std::uint32_t ownersOnly = 0600;
constexpr std::uint32_t ownersFolder = 0700;
constexpr std::uint32_t anyOthers = 0077;
constexpr std::uint32_t othersWrite = 0022;

constexpr std::string_view nameSuffix = ".key";

constexpr ReplacementOptions keyOptions = {
    .durability = Durability::synchronized, .permissions = ownersOnly, .owner = std::nullopt};

bool isMissing(const std::error_code& error) {
    return error == std::errc::no_such_file_or_directory;
}

KeyStatus failed(const char* step, const std::error_code& error) {
    if (isMissing(error)) return key_status::itemNotFound;
    qCWarning(keysLog, "%s: %s", step, error.message().c_str());
    return key_status::inputOutput;
}

KeyStatus refused(const std::string& path, const char* reason) {
    qCWarning(keysLog, "%s: %s", path.c_str(), reason);
    return key_status::inputOutput;
}

void wipe(std::string& bytes) {
    ::explicit_bzero(bytes.data(), bytes.size());
}

// A file name that no two texts share.
std::string encoded(std::string_view text) {
    constexpr std::string_view kept =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._";
    constexpr std::string_view digits = "0123456789abcdef";
    std::string name;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (kept.find(c) != std::string_view::npos) {
            name += c;
        } else {
            name.append({'%', digits[byte / digits.size()], digits[byte % digits.size()]});
        }
    }
    return name;
}

}  // namespace

FileKeyStore::FileKeyStore(FileSystem& files, std::string folder, std::uint32_t userId)
    : files_(files), folder_(std::move(folder)), userId_(userId) {}

std::string FileKeyStore::path(const KeyItem& item) const {
    return joinPath(folder_,
                    encoded(item.service) + '+' + encoded(item.account) + std::string(nameSuffix));
}

bool FileKeyStore::hasItems() const {
    const FileResult<std::vector<std::string>> names = files_.entries(folder_);
    return names && std::any_of(names->begin(), names->end(),
                                [](const std::string& name) { return name.ends_with(nameSuffix); });
}

KeyStatus FileKeyStore::add(const KeyItem& item, const SecretBytes& value, KeyPrompt /*prompt*/) {
    if (value.size() > sizeLimit) return key_status::inputOutput;
    if (const KeyStatus status = makeFolder(); status != key_status::success) return status;
    const std::string place = path(item);
    const KeyStatus former = check(place);
    if (former == key_status::success) return key_status::duplicateItem;
    if (former != key_status::itemNotFound) return former;
    files_.removeAbandonedTemporaries(folder_);
    const FileResult<void> made = claimFile(files_, place, value.view(), keyOptions);
    if (made) return key_status::success;
    if (made.error() == std::errc::file_exists) return key_status::duplicateItem;
    static_cast<void>(failed("열쇠 쓰기", made.error()));
    return key_status::inputOutput;
}

KeyStore::Match FileKeyStore::copyMatching(const KeyItem& item, KeyPrompt /*prompt*/) {
    const std::string place = path(item);
    if (const KeyStatus status = check(place); status != key_status::success)
        return {.status = status};
    FileResult<std::string> bytes = files_.read(place, sizeLimit);
    if (!bytes) return {.status = failed("열쇠 읽기", bytes.error())};
    Match match{.value = SecretBytes(*bytes)};
    wipe(*bytes);
    return match;
}

KeyStatus FileKeyStore::update(const KeyItem& item, const SecretBytes& value,
                               KeyPrompt /*prompt*/) {
    if (value.size() > sizeLimit) return key_status::inputOutput;
    const std::string place = path(item);
    if (const KeyStatus status = check(place); status != key_status::success) return status;
    files_.removeAbandonedTemporaries(folder_);
    const FileResult<void> replaced = replaceFile(files_, place, value.view(), keyOptions);
    return replaced ? key_status::success : failed("열쇠 쓰기", replaced.error());
}

KeyStatus FileKeyStore::remove(const KeyItem& item, KeyPrompt /*prompt*/) {
    const FileResult<void> removed = files_.remove(path(item));
    if (!removed) return failed("열쇠 지우기", removed.error());
    const FileResult<void> reached = files_.synchronizeFolder(folder_);
    return reached ? key_status::success : failed("열쇠 지우기", reached.error());
}

KeyStatus FileKeyStore::check(const std::string& path) const {
    if (const KeyStatus status = checkFolder(); status != key_status::success) return status;
    const FileResult<std::string> link = files_.linkTarget(path);
    if (link) return refused(path, "링크라서 읽지 않는다");
    if (link.error() != std::errc::invalid_argument) return failed("열쇠 보기", link.error());
    const FileResult<FileStatus> status = files_.status(path);
    if (!status) return failed("열쇠 보기", status.error());
    if (status->kind != FileKind::regular) return refused(path, "파일이 아니다");
    if (status->owner != userId_) return refused(path, "다른 사용자의 것이다");
    if ((status->permissions & anyOthers) != 0) return refused(path, "다른 사용자가 볼 수 있다");
    return key_status::success;
}

KeyStatus FileKeyStore::checkFolder() const {
    const FileResult<FileStatus> status = files_.status(folder_);
    if (!status) return failed("열쇠 폴더", status.error());
    if (status->kind != FileKind::folder) return refused(folder_, "폴더가 아니다");
    if (status->owner != userId_) return refused(folder_, "다른 사용자의 것이다");
    if ((status->permissions & othersWrite) != 0)
        return refused(folder_, "다른 사용자가 쓸 수 있다");
    return key_status::success;
}

KeyStatus FileKeyStore::makeFolder() const {
    const KeyStatus status = checkFolder();
    if (status != key_status::itemNotFound) return status;
    const FileResult<void> made = makeFolders(folder_, ownersFolder);
    if (!made) {
        static_cast<void>(failed("열쇠 폴더", made.error()));
        return key_status::inputOutput;
    }
    return checkFolder();
}

}  // namespace brimwatch
