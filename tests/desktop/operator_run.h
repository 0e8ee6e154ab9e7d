// Runs of the selection dialog as an operator works them, from the host object down to real files: scripted windows
// over the open part browser's session. A run is steps in words, such as "select P1 P2; add 5".
#pragma once

#include "host/partkeep_read_impl.h"
#include "partlibrary/session/session_control.h"
#include "tests/partlibrary/library_fixture.h"
#include "tests/support/linux_faults.h"
#include "tests/support/memory_registry.h"
#include "tests/support/scripted_window.h"

#include <optional>

namespace partkeep {

// Joined by "; ".
[[nodiscard]] std::string Joined(const Lines& texts);

// The server list file that the browser's session leaves behind, with its servers' names parted by blanks. `view` is
// the sort column's number and 1 for descending.
[[nodiscard]] std::string ServersFile(const std::string& server, const std::string& folder, const std::string& unit,
                                      const std::string& servers, const std::string& view = "0 0");

[[nodiscard]] std::string OptionsFile(bool prompt, int filter);

// Browser calls by their short names: "start", "go", "click", "png", "named", "staged", "copy", "leave" and so on
// stand for the calls that belong together, "staged*3" for three times the same; any other word for itself.
[[nodiscard]] Lines ExpandCalls(const std::string& shorthand);

// The libraries that the tool makes, in a folder. Made once: nothing changes them.
[[nodiscard]] const std::filesystem::path& SampleLibraries();

class COperatorRun : public IHiddenControls {
public:
    // Libraries are copied from `source`, so that a run may damage them.
    explicit COperatorRun(const std::filesystem::path& source);
    ~COperatorRun() override;
    COperatorRun(const COperatorRun&) = delete;
    COperatorRun& operator=(const COperatorRun&) = delete;

    // What the operator does in the next dialog; Play opens it too, by one Invoke operation.
    void Script(const std::string& steps);
    HostResult Play(PartkeepReadImpl& host, bool multi, const std::string& steps);

    // One line a part that the host gets: "BRK-1 x2 PLATES|Brackets\L PLATESBracketsL .iga .SY5", with " type 1"
    // behind it where the machine type is not 0. Tests attributes and content of each against its library.
    [[nodiscard]] std::string Records(PartkeepReadImpl& host);

    // Paths below the working folder, sorted; an empty folder ends in "/".
    [[nodiscard]] std::string Files() const;
    [[nodiscard]] std::string Servers() const { return ReadBytes(folder.Path("Install/kpdservers.ini")); }
    [[nodiscard]] std::string Options() const { return ReadBytes(folder.Path("Install/ZanPartkeepConfig.xml")); }
    [[nodiscard]] Lines Noted(const std::string& kind) const; // "message" with its title, or "call" by name

    std::unique_ptr<IHostedControl> CreateHidden(const ClassId&, std::int32_t, int, int) override { return nullptr; }

    CTemporaryFolder folder; // Work, Install, Libraries
    Recorder recorder;
    CScriptedWindows windows{recorder};
    CMemoryRegistry registry;
    HostServices services{registry, windows.messages, *this, windows};
    PartkeepReadImpl object{services};

private:
    void Do(CScriptedWindow& window, const Lines& words); // one step
    void PressWithKeypad(CScriptedWindow& window, int button, const std::string& quantity);
    [[nodiscard]] std::string Place(const CScriptedWindow& window) const;
    void CheckPart(const PartRecord& record, const Lines& files) const;
    [[nodiscard]] QString LibraryFile(const QString& server) const;

    std::shared_ptr<CBrowserSession> session_;
    std::optional<CMountedDisk> disk_; // on the working folder
};

} // namespace partkeep
