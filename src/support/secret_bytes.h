// Bytes that nobody else may see: they are wiped when they are dropped, moved from or replaced, and
// nothing prints them. Any thread.
#pragma once

#include <cstddef>
#include <string_view>

namespace brimwatch {

class SecretBytes {
  public:
    SecretBytes() = default;
    explicit SecretBytes(std::size_t size);  // zeros
    explicit SecretBytes(std::string_view bytes);
    SecretBytes(const SecretBytes& other);
    SecretBytes(SecretBytes&& other) noexcept;
    SecretBytes& operator=(const SecretBytes& other);
    SecretBytes& operator=(SecretBytes&& other) noexcept;
    ~SecretBytes();

    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    unsigned char* data() { return bytes_; }
    const unsigned char* data() const { return bytes_; }
    std::string_view view() const;

    // Takes a time that depends on the sizes alone.
    friend bool operator==(const SecretBytes& left, const SecretBytes& right);

  private:
    void drop();

    unsigned char* bytes_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace brimwatch
