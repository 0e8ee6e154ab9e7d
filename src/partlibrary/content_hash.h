// A fast 64-bit hash that tells whether a file's content has changed since it was stored. No protection
// against intent, only against bytes that a disk or a transfer has turned.
#pragma once

#include <QByteArrayView>

#include <cstdint>

namespace partkeep {

[[nodiscard]] std::int64_t ContentHash(QByteArrayView content);

} // namespace partkeep
