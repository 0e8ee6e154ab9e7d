#include "settings/process_values.h"

namespace partkeep {

ProcessValues& TheProcessValues()
{
    static ProcessValues values;
    return values;
}

} // namespace partkeep
