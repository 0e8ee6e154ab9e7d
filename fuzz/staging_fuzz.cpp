// Names of staged files against the plain model. The input is a path and a part name, parted by the first zero
// byte, each byte standing for a unit of the model's alphabet.
#include "partdata/staged_names.h"
#include "staging_model.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

using namespace partkeep;

namespace {

std::u16string Spelled(const std::uint8_t* begin, const std::uint8_t* end)
{
    std::u16string text;
    std::transform(begin, end, std::back_inserter(text),
                   [](std::uint8_t byte) { return model::alphabet[byte % model::alphabet.size()]; });
    return text;
}

void Check(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::uint8_t* end = data + size;
    const std::uint8_t* middle = std::find(data, end, 0);
    const std::u16string path = Spelled(data, middle);
    const std::u16string name = Spelled(middle == end ? end : middle + 1, end);
    Check(IsClearedBeforeStaging(path, name) == model::Clears(path, name));
    if (!name.empty()) {
        Check(IsDeletedWithPart(path, name) == model::Deletes(path, name));
    }
    return 0;
}
