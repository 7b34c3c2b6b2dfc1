#include "platform/linux/chosen_key_store.h"

#include <QLoggingCategory>
#include <utility>

#include "support/atomic_file.h"
#include "support/json_reader.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

Q_LOGGING_CATEGORY(keysLog, "net.quillmoor.brimwatch.mac.keys")

constexpr const char* serviceName = "secret-service";
constexpr const char* filesName = "files";
constexpr std::size_t choiceSizeLimit = 1024;

constexpr ReplacementOptions choiceOptions = {
    .durability = Durability::synchronized, .permissions = 0600, .owner = std::nullopt};

}  // namespace

ChosenKeyStore::ChosenKeyStore(Stores stores, FileSystem& files, std::string choiceFile)
    : stores_(std::move(stores)), files_(files), choiceFile_(std::move(choiceFile)) {}

KeyStatus ChosenKeyStore::add(const KeyItem& item, const SecretBytes& value, KeyPrompt prompt) {
    KeyStore* const store = chosen();
    return store != nullptr ? store->add(item, value, prompt) : addFirst(item, value, prompt);
}

KeyStore::Match ChosenKeyStore::copyMatching(const KeyItem& item, KeyPrompt prompt) {
    if (KeyStore* const store = chosen()) return store->copyMatching(item, prompt);
    Match match = stores_.secretService.copyMatching(item, prompt);
    match.status = unchosen(match.status);
    return match;
}

KeyStatus ChosenKeyStore::update(const KeyItem& item, const SecretBytes& value, KeyPrompt prompt) {
    if (KeyStore* const store = chosen()) return store->update(item, value, prompt);
    return unchosen(stores_.secretService.update(item, value, prompt));
}

KeyStatus ChosenKeyStore::remove(const KeyItem& item, KeyPrompt prompt) {
    if (KeyStore* const store = chosen()) return store->remove(item, prompt);
    return unchosen(stores_.secretService.remove(item, prompt));
}

// Where nothing can be kept and nothing is, nothing is missed.
KeyStatus ChosenKeyStore::unchosen(KeyStatus status) const {
    const bool isNowhere = status == key_status::notAvailable && stores_.isServiceMissing();
    return isNowhere ? key_status::itemNotFound : status;
}

KeyStatus ChosenKeyStore::addFirst(const KeyItem& item, const SecretBytes& value,
                                   KeyPrompt prompt) {
    const KeyStatus status = stores_.secretService.add(item, value, prompt);
    if (status == key_status::success || status == key_status::duplicateItem)
        remember(Choice::secretService);
    if (status != key_status::notAvailable || !stores_.isServiceMissing()) return status;
    // Before the item: one whose place is forgotten might be made a second time elsewhere.
    if (!remember(Choice::files)) return key_status::inputOutput;
    qCWarning(keysLog, "비밀 저장소가 없어 열쇠를 파일에 둔다");
    return stores_.files.add(item, value, prompt);
}

KeyStore* ChosenKeyStore::chosen() {
    if (!choice_) {
        const FileResult<std::string> bytes = files_.read(choiceFile_, choiceSizeLimit);
        const std::optional<JsonValue> value = bytes ? parseJson(*bytes) : std::nullopt;
        if (value == JsonValue(serviceName)) choice_ = Choice::secretService;
        if (value == JsonValue(filesName)) choice_ = Choice::files;
    }
    if (!choice_ && stores_.hasFiles()) choice_ = Choice::files;
    if (!choice_) return nullptr;
    return *choice_ == Choice::files ? &stores_.files : &stores_.secretService;
}

bool ChosenKeyStore::remember(Choice choice) {
    const std::string name = choice == Choice::files ? filesName : serviceName;
    FileResult<void> written = files_.makeFolders(parentPath(choiceFile_));
    if (written) written = replaceFile(files_, choiceFile_, '"' + name + '"', choiceOptions);
    if (written) {
        choice_ = choice;
        return true;
    }
    qCWarning(keysLog, "열쇠를 둔 곳을 적지 못했다: %s", written.error().message().c_str());
    return false;
}

}  // namespace brimwatch
