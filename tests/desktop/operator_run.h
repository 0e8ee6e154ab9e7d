// Runs of the selection dialog as an operator works them, from the host object down to real files: scripted windows
// over the open part browser's session. A run is a list of steps in words, such as "select P1 P2" or "add 5".
#pragma once

#include "host/partkeep_read_impl.h"
#include "partlibrary/session_control.h"
#include "tests/partlibrary/library_fixture.h"
#include "tests/support/linux_faults.h"
#include "tests/support/memory_registry.h"
#include "tests/support/scripted_window.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace partkeep {

using Texts = std::vector<std::string>;

// Joined by single blanks.
[[nodiscard]] std::string Joined(const Texts& texts);

// The server list file that the browser's session leaves behind. `view` is the sort column's number and 1 for
// descending.
[[nodiscard]] std::string ServersFile(const std::string& server, const std::string& folder, const std::string& unit,
                                      const Texts& servers, const std::string& view = "0 0");

[[nodiscard]] std::string OptionsFile(bool prompt, int filter);

// Browser calls by their short names: "start", "go", "click", "png", "named", "staged", "copy", "leave" and so on
// stand for the calls that belong together, "staged*3" for three times the same; any other word for itself.
[[nodiscard]] Texts ExpandCalls(const std::string& shorthand);

class COperatorRun : public IHiddenControls {
public:
    // Libraries are copied from `source`, so that a run may damage them.
    explicit COperatorRun(const std::filesystem::path& source);
    ~COperatorRun() override;
    COperatorRun(const COperatorRun&) = delete;
    COperatorRun& operator=(const COperatorRun&) = delete;

    // One Invoke operation, worked by these steps.
    HostResult Play(PartkeepReadImpl& host, bool multi, const Texts& steps);

    // One line a part that the host gets: "BRK-1 x2 PLATES|Brackets\L PLATESBracketsL .iga .SY5", with " type 1"
    // behind it where the machine type is not 0. Tests attributes and content of each against its library.
    [[nodiscard]] Texts Records(PartkeepReadImpl& host);

    // Paths below the working folder, sorted; an empty folder ends in "/".
    [[nodiscard]] Texts Files() const;
    [[nodiscard]] std::string Servers() const { return ReadBytes(folder.Path("Install/kpdservers.ini")); }
    [[nodiscard]] std::string Options() const { return ReadBytes(folder.Path("Install/ZanPartkeepConfig.xml")); }
    [[nodiscard]] Texts Messages() const; // their texts and titles
    [[nodiscard]] Texts Calls() const;    // names of the browser's operations

    std::unique_ptr<IHostedControl> CreateHidden(const ClassId&, std::int32_t, int, int) override { return nullptr; }

    CTemporaryFolder folder; // Work, Install, Libraries
    Recorder recorder;
    CScriptedWindows windows{recorder};
    CMemoryRegistry registry;
    HostServices services{registry, windows.messages, *this, windows};
    PartkeepReadImpl object{services};

private:
    void Do(CScriptedWindow& window, const std::string& step);
    void DoInBrowser(const std::string& verb, const Texts& words);
    void DoOnDisk(const std::string& verb, const std::string& name);
    void DoInList(const std::string& verb, const Texts& words);
    void PlayKeypad(const std::string& quantity);
    [[nodiscard]] std::string Place(const CScriptedWindow& window) const;
    void CheckFile(const std::u16string& path, const std::u16string& server, const std::u16string& part_folder);
    void CheckAttributes(const PartRecord& record);
    [[nodiscard]] QString LibraryFile(const QString& server) const;

    std::shared_ptr<CBrowserSession> session_;
    std::optional<CMountedDisk> disk_; // on the working folder
};

} // namespace partkeep
