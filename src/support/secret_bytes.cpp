#include "support/secret_bytes.h"

#include <cstring>
#include <utility>

namespace brimwatch {

SecretBytes::SecretBytes(std::size_t size)
    : bytes_(size == 0 ? nullptr : new unsigned char[size]()), size_(size) {}

SecretBytes::SecretBytes(std::string_view bytes) : SecretBytes(bytes.size()) {
    if (!bytes.empty()) std::memcpy(bytes_, bytes.data(), bytes.size());
}

SecretBytes::SecretBytes(const SecretBytes& other) : SecretBytes(other.view()) {}

SecretBytes::SecretBytes(SecretBytes&& other) noexcept
    : bytes_(std::exchange(other.bytes_, nullptr)), size_(std::exchange(other.size_, 0)) {}

SecretBytes& SecretBytes::operator=(const SecretBytes& other) {
    if (this != &other) *this = SecretBytes(other);
    return *this;
}

SecretBytes& SecretBytes::operator=(SecretBytes&& other) noexcept {
    if (this == &other) return *this;
    drop();
    bytes_ = std::exchange(other.bytes_, nullptr);
    size_ = std::exchange(other.size_, 0);
    return *this;
}

SecretBytes::~SecretBytes() {
    drop();
}

std::string_view SecretBytes::view() const {
    if (size_ == 0) return {};
    return {reinterpret_cast<const char*>(bytes_), size_};
}

void SecretBytes::drop() {
    if (bytes_ == nullptr) return;
    ::explicit_bzero(bytes_, size_);
    delete[] std::exchange(bytes_, nullptr);
    size_ = 0;
}

bool operator==(const SecretBytes& left, const SecretBytes& right) {
    if (left.size_ != right.size_) return false;
    unsigned char difference = 0;
    for (std::size_t i = 0; i < left.size_; ++i) {
        difference = static_cast<unsigned char>(difference | (left.bytes_[i] ^ right.bytes_[i]));
    }
    return difference == 0;
}

}  // namespace brimwatch
