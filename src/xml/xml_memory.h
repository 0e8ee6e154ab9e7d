// Memory of the XML store: blocks, text cells, bodies and lists all come from here, so that one place
// decides how they are pooled. One source is chosen at link time; the pool is the product's.
// Not for two threads at once, like the whole library.
#pragma once

#include <cstddef>

namespace partkeep {

// Null when there is no memory. `alignment` is a power of two, at most that of std::max_align_t.
[[nodiscard]] void* AllocateXml(std::size_t size, std::size_t alignment);

// `size` is the size the memory was asked for with. Null is ignored.
void FreeXml(void* memory, std::size_t size);

} // namespace partkeep
