// Bytes that nobody else may see: they are wiped when they are dropped, moved from or replaced, and
// nothing prints them. Any thread.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace brimwatch {

class SecretBytes {
  public:
    SecretBytes() = default;
    explicit SecretBytes(std::size_t size);  // zeros
    explicit SecretBytes(std::string_view bytes);
    SecretBytes(const SecretBytes& other) = default;
    SecretBytes(SecretBytes&& other) noexcept = default;
    SecretBytes& operator=(const SecretBytes& other);
    SecretBytes& operator=(SecretBytes&& other) noexcept;
    ~SecretBytes();

    std::size_t size() const { return bytes_.size(); }
    bool empty() const { return bytes_.empty(); }
    unsigned char* data() { return bytes_.data(); }
    const unsigned char* data() const { return bytes_.data(); }
    std::string_view view() const;

    // Takes a time that depends on the sizes alone.
    friend bool operator==(const SecretBytes& left, const SecretBytes& right);

  private:
    void wipe();

    std::vector<unsigned char> bytes_;  // never grows, which would leave a copy behind
};

}  // namespace brimwatch
