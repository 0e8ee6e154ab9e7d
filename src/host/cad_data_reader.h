// Fetches one part whose server, folder and name are known, without a dialog: over a part browser of its own
// that is never shown. A plain object that lives for one call.
#pragma once

#include "partdata/part_record.h"
#include "platform/control.h"
#include "platform/messages.h"

#include <string>
#include <string_view>

namespace partkeep {

class CCADDataReader {
public:
    CCADDataReader(std::u16string workingFolder, IHiddenControls& controls, IMessages& messages);

    // Brings the part's files into the working folder and fills six fields of the record: FilePathName (empty
    // when no file came), PartName, PartComment, MaterialType, Thickness (undivided) and Qty ("1"). False when
    // the part was not read; the record is then as it was. The data type selects nothing.
    bool ReadCADData(std::u16string_view server, std::u16string_view folder, std::u16string_view part_name,
                     std::u16string_view data_type, PartRecord& record);

    // The part's main file in the working folder, or empty text behind a message.
    std::u16string FindCADFile(std::u16string_view part_name);

private:
    std::u16string workingFolder_;
    IHiddenControls& controls_;
    IMessages& messages_;
};

} // namespace partkeep
