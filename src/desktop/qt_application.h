// The toolkit's application of the process: the host's own where it has one, otherwise one that the component makes
// when the first window or message is wanted and takes away again with the last object that asked for it.
#pragma once

#include <memory>

namespace partkeep {

class CQtApplication {
public:
    // Makes sure of an application on this thread. Cheap when repeated. Ends the process where there is no screen.
    void Ensure();

private:
    std::shared_ptr<void> made_; // null: the host's, or none
};

} // namespace partkeep
