// What a host brings along and what it gets: the folders of a run, and the records of an object.
#pragma once

#include "host/partkeep_read_impl.h"
#include "platform/text.h"
#include "settings/process_values.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <sstream>

namespace partkeep {

// "Install" and "Work", with which what was set for the process goes.
struct CHostFolders : CTemporaryFolder {
    CHostFolders()
    {
        std::filesystem::create_directory(Path("Install"));
        std::filesystem::create_directory(Path("Work"));
    }
    ~CHostFolders() { TheProcessValues() = {}; }
};

inline std::int32_t CountOf(IPartkeepReadImpl& host)
{
    std::int32_t count = -1;
    EXPECT_EQ(host.NumberOfPartsSelected(&count), HostResult::Ok);
    return count;
}

// All that is told of a part; "before" and 7 where nothing is.
inline PartRecord RecordOf(IPartkeepReadImpl& host, std::int32_t index)
{
    const std::u16string before = u"before";
    PartRecord part{before, before, before, before, before, before, {}, 7.0, before, before, before, before, 7};
    EXPECT_EQ(host.GetPartInfo(index, &part.serverName, &part.folderName, &part.FilePathName, &part.SYFileName,
                               &part.NCFileName, &part.PartName, &part.PartComment, &part.MaterialType,
                               &part.MachineName, &part.MachineType, &part.Thickness, &part.Qty),
              HostResult::Ok);
    return part;
}

// In the order of the call, but numbers last: "SRV1|A\\B|...|A2|a comment|SUS|M1|007|3.2|0".
inline std::string Told(const PartRecord& part)
{
    std::ostringstream told;
    for (const auto& text : {part.serverName, part.folderName, part.FilePathName, part.SYFileName, part.NCFileName,
                             part.PartName, part.PartComment, part.MaterialType, part.MachineName, part.Qty}) {
        told << NarrowText(text, utf8_code_page) << '|';
    }
    told << part.Thickness << '|' << part.MachineType;
    return told.str();
}

} // namespace partkeep
