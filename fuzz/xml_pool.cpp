// For xml_operations.cpp on the product's pool, which counts no pieces: what overlaps there shows in the model.
#include "tests/xml/watched_memory.h"

std::size_t watched_memory::live_pieces = 0;
