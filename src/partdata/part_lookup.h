// How a selected entry of the part browser becomes a part record, and how its files are ordered into a staging
// folder. Holds nothing of its own: the dialog owns the browser and the state that is read and written here, and
// outlives the look-up.
#pragma once

#include "controls/kpd_key_manager.h"
#include "partdata/part_record.h"
#include "platform/messages.h"
#include "settings/machine_filter.h"

#include <cstdint>
#include <list>
#include <string>
#include <string_view>

namespace partkeep {

struct LookupState {
    std::u16string& currentServer;    // written by each naming of an entry
    std::u16string& lookupFolder;     // the browser's current folder at the last naming
    const MachineFilterState& filter; // read when a part is staged
};

class CPartLookup {
public:
    CPartLookup(CKPDKeyManager& browser, IMessages& messages, LookupState state);

    // Asks the browser for its current server and folder and for the entry's name, widened. Empty when the entry
    // is gone. The server and folder that the entry reports for itself count for nothing.
    std::u16string NameSelectedEntry(std::int16_t index);

    // Sets MachineName, MaterialType, PartComment and Thickness. False when the browser does not know the part;
    // the record is then untouched.
    bool QueryPartInfo(std::u16string_view server, std::u16string_view folder, std::u16string_view name,
                       PartRecord& record);

    // True when the entry must not be taken: it has no name, or it is in the list.
    enum class WhenListed { BeSilent, TellUser };
    bool IsPartListed(std::int16_t index, const std::list<PartRecord>& list, WhenListed what);

    // Fills the record and has the part's files copied into the browser's target folder, which must be the staging
    // folder already. Whether files arrived is not looked at. False when the entry has no name: the user has been
    // told and the record is untouched. `staging_folder` has no trailing separator.
    bool StagePart(std::int16_t index, std::u16string_view staging_folder, std::u16string_view quantity,
                   PartRecord& record);

    // Deletes from the working folder what belongs to the entry.
    void DeleteSelectedPartFiles(std::int16_t index);

private:
    void CopyFiles(std::u16string_view name);

    CKPDKeyManager& browser_;
    IMessages& messages_;
    LookupState state_;
};

} // namespace partkeep
