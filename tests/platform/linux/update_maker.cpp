#include "platform/linux/update_maker.h"

#include <archive.h>
#include <archive_entry.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <QByteArray>
#include <algorithm>
#include <filesystem>

namespace brimwatch::test {
namespace {

namespace fs = std::filesystem;
using Kind = ArchiveEntry::Kind;

mode_t typeOf(Kind kind) {
    switch (kind) {
        case Kind::folder:
            return AE_IFDIR;
        case Kind::symbolicLink:
            return AE_IFLNK;
        case Kind::device:
            return AE_IFCHR;
        case Kind::pipe:
            return AE_IFIFO;
        case Kind::file:
        case Kind::hardLink:
            break;
    }
    return AE_IFREG;
}

void addFilter(archive* out, Compression compression) {
    switch (compression) {
        case Compression::none:
            archive_write_add_filter_none(out);
            return;
        case Compression::gzip:
            archive_write_add_filter_gzip(out);
            return;
        case Compression::xz:
            archive_write_add_filter_xz(out);
            return;
        case Compression::zstd:
            archive_write_add_filter_zstd(out);
            return;
        case Compression::bzip2:
            archive_write_add_filter_bzip2(out);
    }
}

void add(archive* out, const ArchiveEntry& made) {
    archive_entry* entry = archive_entry_new();
    archive_entry_set_pathname(entry, made.path.c_str());
    archive_entry_set_filetype(entry, typeOf(made.kind));
    archive_entry_set_perm(entry, made.mode);
    archive_entry_set_uid(entry, 12345);
    if (made.kind == Kind::symbolicLink) archive_entry_set_symlink(entry, made.content.c_str());
    if (made.kind == Kind::hardLink) archive_entry_set_hardlink(entry, made.content.c_str());
    if (made.kind == Kind::device) archive_entry_set_rdev(entry, 0x103);
    const bool hasData = made.kind == Kind::file;
    archive_entry_set_size(entry, hasData ? static_cast<la_int64_t>(made.content.size()) : 0);
    archive_write_header(out, entry);
    if (hasData) archive_write_data(out, made.content.data(), made.content.size());
    archive_entry_free(entry);
}

la_ssize_t append(archive*, void* place, const void* bytes, std::size_t size) {
    static_cast<std::string*>(place)->append(static_cast<const char*>(bytes), size);
    return static_cast<la_ssize_t>(size);
}

EVP_PKEY* keyOf(void* key) {
    return static_cast<EVP_PKEY*>(key);
}

std::string base64(const unsigned char* bytes, std::size_t size) {
    return QByteArray(reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(size))
        .toBase64()
        .toStdString();
}

}  // namespace

std::string makeArchive(const std::vector<ArchiveEntry>& entries, Compression compression) {
    std::string bytes;
    archive* out = archive_write_new();
    archive_write_set_format_pax_restricted(out);
    addFilter(out, compression);
    archive_write_set_bytes_in_last_block(out, 1);
    archive_write_open(out, &bytes, nullptr, append, nullptr);
    for (const ArchiveEntry& entry : entries)
        add(out, entry);
    archive_write_close(out);
    archive_write_free(out);
    return bytes;
}

std::string bundleInfoOf(const std::string& version) {
    return R"({"CFBundleIdentifier":"net.example.test.mac","CFBundleVersion":")" + version + "\"}";
}

std::vector<ArchiveEntry> entriesOf(const std::string& version) {
    return {{.path = "bin", .kind = Kind::folder, .mode = 0755},
            {.path = "bin/brimwatch", .content = "command " + version, .mode = 0755},
            {.path = "libexec/brimwatch/brimwatch-desktop",
             .content = "desktop " + version,
             .mode = 0755},
            {.path = "libexec/brimwatch/brimwatch-views.so", .content = std::string(300'000, 'v')},
            {.path = "libexec/brimwatch/bundle-info.json", .content = bundleInfoOf(version)},
            {.path = "share/link", .content = "../bin/brimwatch", .kind = Kind::symbolicLink}};
}

SigningKey::SigningKey() : key_(EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519")) {}

SigningKey::~SigningKey() {
    EVP_PKEY_free(keyOf(key_));
}

std::string SigningKey::publicKey() const {
    unsigned char bytes[32];
    std::size_t size = sizeof bytes;
    EVP_PKEY_get_raw_public_key(keyOf(key_), bytes, &size);
    return base64(bytes, size);
}

std::string SigningKey::sign(const std::string& message) const {
    unsigned char bytes[64];
    std::size_t size = sizeof bytes;
    EVP_MD_CTX* context = EVP_MD_CTX_new();
    EVP_DigestSignInit(context, nullptr, nullptr, nullptr, keyOf(key_));
    EVP_DigestSign(context, bytes, &size, reinterpret_cast<const unsigned char*>(message.data()),
                   message.size());
    EVP_MD_CTX_free(context);
    return base64(bytes, size);
}

Installation::Installation() : root_(fs::canonical(folder_.path()).string() + "/brimwatch") {
    for (const ArchiveEntry& entry : entriesOf("1")) {
        if (entry.kind != Kind::file) continue;
        const std::string path = versionsFolder() + "/1/" + entry.path;
        writeFile(path, entry.content);
        ::chmod(path.c_str(), entry.mode);
    }
    fs::create_symlink("versions/1", root_ + "/current");
}

std::string Installation::current() const {
    std::error_code error;
    const std::string version = fs::read_symlink(root_ + "/current", error).filename();
    if (error) return "no link";
    for (const ArchiveEntry& entry : entriesOf(version)) {
        const std::string path = root_ + "/current/" + entry.path;
        if (entry.kind != Kind::file) continue;
        if (!exists(path)) return "no " + entry.path;
        if (readFile(path) != entry.content) return "another " + entry.path;
        struct stat status {};
        ::stat(path.c_str(), &status);
        if ((status.st_mode & 07777U) != entry.mode) return "another mode of " + entry.path;
    }
    return version;
}

std::vector<std::string> Installation::versions() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(versionsFolder()))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace brimwatch::test
