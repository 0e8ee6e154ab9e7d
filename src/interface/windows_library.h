// Finds and loads the part of the component that draws.
#pragma once

#include "host/windows_part.h"

#include <memory>
#include <string>

namespace partkeep {

inline constexpr char16_t library_missing_text[] = u"the part of Partkeep Read that draws cannot be loaded.";

// Where the component's parts lie: beside the file that holds this very code, links followed. Empty when unknown.
[[nodiscard]] std::string PartsFolder();

class CWindowsLibrary {
public:
    // `registry` must outlive this.
    explicit CWindowsLibrary(const IRegistry& registry) : registry_(registry) {}

    // Without loading it.
    [[nodiscard]] bool IsThere() const;

    // Loaded when first asked for, then kept; null when that fails. It is this object's. To be asked for only where
    // there is a screen.
    [[nodiscard]] IWindowsPart* Part();

    [[nodiscard]] std::string ProbePath() const { return folder_ + screen_probe_file; }

private:
    const IRegistry& registry_;
    std::string folder_ = PartsFolder();
    std::unique_ptr<IWindowsPart> part_;
};

} // namespace partkeep
