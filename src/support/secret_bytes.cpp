#include "support/secret_bytes.h"

#include <cstring>
#include <utility>

namespace brimwatch {

SecretBytes::SecretBytes(std::size_t size) : bytes_(size) {}

SecretBytes::SecretBytes(std::string_view bytes) : bytes_(bytes.begin(), bytes.end()) {}

SecretBytes& SecretBytes::operator=(const SecretBytes& other) {
    if (this != &other) *this = SecretBytes(other);
    return *this;
}

SecretBytes& SecretBytes::operator=(SecretBytes&& other) noexcept {
    if (this == &other) return *this;
    wipe();
    bytes_ = std::move(other.bytes_);
    return *this;
}

SecretBytes::~SecretBytes() {
    wipe();
}

std::string_view SecretBytes::view() const {
    return {reinterpret_cast<const char*>(bytes_.data()), bytes_.size()};
}

void SecretBytes::wipe() {
    if (!bytes_.empty()) ::explicit_bzero(bytes_.data(), bytes_.size());
}

bool operator==(const SecretBytes& left, const SecretBytes& right) {
    if (left.size() != right.size()) return false;
    unsigned char difference = 0;
    for (std::size_t i = 0; i < left.size(); ++i) {
        difference = static_cast<unsigned char>(difference | (left.bytes_[i] ^ right.bytes_[i]));
    }
    return difference == 0;
}

}  // namespace brimwatch
