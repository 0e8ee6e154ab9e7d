// One part, as it travels through the system: a plain value that is copied whole. A part has no key of its own;
// server, folder and name together name it.
#pragma once

#include <cstdint>
#include <string>

namespace partkeep {

struct PartRecord {
    std::u16string FilePathName; // main staged file: the .iga file, else the .bmf file
    std::u16string PartName;     // without extension
    std::u16string PartComment;
    std::u16string MaterialType;
    std::u16string serverName;
    std::u16string folderName;    // on that server
    std::u16string stagingFolder; // local, without trailing separator; never handed to the host
    double Thickness = 0.0;       // the database's integer divided by 10000.0
    std::u16string Qty;           // decimal digits as entered: 007 stays 007
    std::u16string SYFileName;    // staged .SY5 file, or empty
    std::u16string MachineName;
    std::u16string NCFileName;    // staged .NCD file, or empty
    std::int32_t MachineType = 0; // machine filter at the moment of staging: 0 PART, 1 NCT, 2 LASER, 3 MARVEN

    friend bool operator==(const PartRecord&, const PartRecord&) = default;
};

// Same part: name, server and folder equal, character by character. Files of parts that differ only in case
// are shared on disk all the same.
[[nodiscard]] inline bool IsSamePart(const PartRecord& left, const PartRecord& right)
{
    return left.PartName == right.PartName && left.serverName == right.serverName &&
           left.folderName == right.folderName;
}

} // namespace partkeep
