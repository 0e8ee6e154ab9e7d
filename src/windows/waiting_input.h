// What the user has typed and clicked and no window has taken yet.
#pragma once

namespace partkeep {

// Throws away the keys and clicks that wait for windows of this thread. A request to quit stays.
void DropWaitingInput();

} // namespace partkeep
