// What the C interface makes a host object from. Which services they are is chosen when linking, so that a test can
// bring its own.
#pragma once

#include "host/host_services.h"

#include <memory>

namespace partkeep {

class IOwnedServices {
public:
    virtual ~IOwnedServices() = default;

    [[nodiscard]] virtual HostServices Services() = 0; // good for as long as this is
};

[[nodiscard]] std::unique_ptr<IOwnedServices> MakeOwnedServices();

} // namespace partkeep
