// Signatures of the makers of updates (Ed25519, RFC 8032, over the bytes as they are). Any thread.
#pragma once

#include <string_view>

namespace brimwatch {

// Whether the text is base64 of a key, or of a signature, and nothing else. White space in it is
// passed over.
bool isEd25519Key(std::string_view base64);
bool isEd25519Signature(std::string_view base64);

// False, too, where the key or the signature is none.
bool verifyEd25519(std::string_view bytes, std::string_view signatureBase64,
                   std::string_view keyBase64);

}  // namespace brimwatch
