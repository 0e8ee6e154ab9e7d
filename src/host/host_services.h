// What the host object asks of its platform: handed to it when it is made and passed down from there.
#pragma once

namespace partkeep {

class IDialogWindows;
class IHiddenControls;
class IMessages;
class IRegistry;

struct HostServices {
    const IRegistry& registry;
    IMessages& messages; // owned by the thread's main window
    IHiddenControls& controls;
    IDialogWindows& windows;
};

} // namespace partkeep
