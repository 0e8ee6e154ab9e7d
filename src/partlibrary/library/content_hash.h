// SHA-256 of content that comes in pieces (the library nettle). A content is the same wherever its hash is.
#pragma once

#include <QByteArray>

#include <cstdint>
#include <nettle/sha2.h>
#include <string_view>

namespace partkeep {

inline constexpr qint64 hash_bytes = SHA256_DIGEST_SIZE;

class CContentHash {
public:
    CContentHash() { sha256_init(&state_); }
    void Add(std::string_view bytes)
    {
        sha256_update(&state_, bytes.size(), reinterpret_cast<const std::uint8_t*>(bytes.data()));
    }
    [[nodiscard]] QByteArray Hash()
    {
        QByteArray hash(hash_bytes, Qt::Uninitialized);
        sha256_digest(&state_, hash_bytes, reinterpret_cast<std::uint8_t*>(hash.data()));
        return hash;
    }

private:
    sha256_ctx state_ = {};
};

} // namespace partkeep
