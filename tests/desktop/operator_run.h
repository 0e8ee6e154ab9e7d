// Runs of the selection dialog as an operator works them, from the host object down to real files: scripted windows
// over the open part browser's session. A run is steps in words, such as "select P1 P2; add 5".
#pragma once

#include "partlibrary/session/session_control.h"
#include "platform/files.h"
#include "resources/resource_ids.h"
#include "samples/sample_library.h"
#include "tests/partlibrary/library_fixture.h"
#include "tests/support/host_side.h"
#include "tests/support/linux_faults.h"
#include "tests/support/memory_registry.h"
#include "tests/support/scripted_control.h"
#include "tests/support/scripted_window.h"

#include <optional>

namespace partkeep {

namespace fs = std::filesystem;

// Notes the name of each operation on its way to the session, and a click that does not wait for its end.
class CNotingControl : public IHostedControl {
public:
    CNotingControl(Recorder& recorder, std::shared_ptr<CBrowserSession> session)
        : recorder_(recorder), control_(std::move(session))
    {
    }

    ControlResult Invoke(std::int32_t dispatch_id, InvokeKind kind, std::span<const ControlArgument> arguments,
                         ControlType result) override
    {
        recorder_.Note("call " + std::string(FindBrowserSignature(dispatch_id)->name));
        ++inside_;
        ControlResult answer = control_.Invoke(dispatch_id, kind, arguments, result);
        --inside_;
        return answer;
    }
    void SetEventSink(std::function<void(std::int32_t)> sink) override
    {
        control_.SetEventSink([this, sink = std::move(sink)](std::int32_t event) {
            EXPECT_EQ(inside_, 0) << "an event inside a call";
            sink(event);
        });
    }

private:
    Recorder& recorder_;
    CSessionControl control_;
    int inside_ = 0;
};

inline std::string Narrow(const std::u16string& text)
{
    return NarrowText(text, utf8_code_page);
}

inline QString Qt(const std::string& text)
{
    return QString::fromStdString(text);
}

inline const std::map<std::string, int> tools = {
    {"PART", RES_FILTER_PART}, {"NCT", RES_FILTER_NCT}, {"LASER", RES_FILTER_LASER}, {"MARVEN", RES_FILTER_MARVEN}};

// The libraries that the tool makes, in a folder. Made once: nothing changes them.
inline const fs::path& SampleLibraries()
{
    static const CTemporaryFolder* const folder = new CTemporaryFolder; // until the process ends
    static const fs::path path = [] {
        QStringList made;
        LibraryProblem problem;
        const QString where = QString::fromStdString(folder->Path().string());
        EXPECT_TRUE(MakeSampleLibraries(where, false, made, problem)) << ProblemText(problem);
        return folder->Path();
    }();
    return path;
}

class COperatorRun : public IHiddenControls {
public:
    // Libraries are copied from `source`, so that a run may damage them.
    explicit COperatorRun(const fs::path& source)
    {
        fs::copy(source, folder.Path("Libraries"));
        registry.Set(u"HKLM\\software\\Velmar\\ORVIC", u"installpath", folder.Core(u"Install"));
        windows.makeControl = [this](int id) -> std::unique_ptr<IHostedControl> {
            if (id == RES_PICTURE) {
                return nullptr;
            }
            session_ = std::make_shared<CBrowserSession>(CLibraryFolder(Qt(folder.Path("Libraries").string())));
            return std::make_unique<CNotingControl>(recorder, session_);
        };
        object.SetWorkingFolder(folder.Core(u"Work") + u"\\");
        object.SetLanguageID(1);
    }

    // What the operator does in the next dialog; Play opens it too, by one Invoke operation.
    void Script(const std::string& steps)
    {
        std::vector<UserAction> actions;
        for (const std::string& step : Steps(steps)) {
            actions.emplace_back([this, step](CScriptedWindow& window) {
                SCOPED_TRACE(step);
                Lines words = Words(step);
                words.emplace_back(); // for a step without a quantity
                Do(window, words);
            });
        }
        windows.Play(RES_SELECTION_DIALOG, std::move(actions));
    }
    HostResult Play(PartkeepReadImpl& host, bool multi, const std::string& steps)
    {
        Script(steps);
        return multi ? host.InvokePartkeepMultiSelection(1) : host.InvokePartkeep();
    }

    // A line a part that the host gets: "BRK-1 x2 PLATES|Brackets\L PLATESBracketsL .iga .SY5", with " type 1"
    // behind it where the machine type is not 0. Tests attributes and content of each against its library.
    Lines Records(PartkeepReadImpl& host)
    {
        const std::u16string work = folder.Core(u"Work") + u"\\";
        Lines records;
        for (std::int32_t index = 0; index < CountOf(host); ++index) {
            const PartRecord part = RecordOf(host, index);
            std::string text =
                Narrow(part.PartName + u" x" + part.Qty + u" " + part.serverName + u"|" + part.folderName);
            Lines files;
            for (const std::u16string& path : {part.FilePathName, part.SYFileName, part.NCFileName}) {
                if (!path.empty()) {
                    const std::u16string folder_name = path.substr(0, path.rfind(path_separator));
                    const std::u16string stem = folder_name + path_separator + part.PartName;
                    EXPECT_TRUE(path.starts_with(work) && path.starts_with(stem)) << Narrow(path);
                    text += files.empty() ? " " + Narrow(folder_name.substr(work.size())) : "";
                    text += " " + Narrow(path.substr(stem.size()));
                    files.push_back(NativePath(path));
                }
            }
            CheckPart(part, files);
            records.push_back(text + (part.MachineType != 0 ? " type " + std::to_string(part.MachineType) : ""));
        }
        return records;
    }

    // Paths below the working folder, sorted; an empty folder ends in "/".
    [[nodiscard]] Lines Files() const
    {
        Lines files;
        const fs::path work = folder.Path("Work");
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(work)) {
            if (!entry.is_directory() || fs::is_empty(entry.path())) {
                files.push_back(fs::relative(entry.path(), work).string() + (entry.is_directory() ? "/" : ""));
            }
        }
        std::sort(files.begin(), files.end());
        return files;
    }
    [[nodiscard]] std::string Servers() const { return ReadBytes(folder.Path("Install/kpdservers.ini")); }
    [[nodiscard]] std::string Options() const { return ReadBytes(folder.Path("Install/ZanPartkeepConfig.xml")); }
    [[nodiscard]] Lines Noted(const std::string& kind) const // "message" with its title, or "call" by name
    {
        Lines found;
        for (const std::string& line : recorder.lines) {
            if (line.starts_with(kind + " ")) {
                found.push_back(line.substr(kind.size() + 1));
            }
        }
        return found;
    }

    std::unique_ptr<IHostedControl> CreateHidden(const ClassId&, std::int32_t, int, int) override { return nullptr; }

    CHostFolders folder; // and Libraries
    Recorder recorder;
    CScriptedWindows windows{recorder};
    CMemoryRegistry registry;
    HostServices services{registry, windows.messages, *this, windows};
    PartkeepReadImpl object{services};

private:
    // One step. Those that open the keypad take the quantity that it is given, "-" to cancel it, or nothing where it
    // does not open.
    void Do(CScriptedWindow& window, const Lines& words)
    {
        CScriptedWindow* const list = windows.Find(RES_SELECTED_PARTS_DIALOG);
        const auto with_row = [&]() -> CScriptedWindow& {
            list->SelectRows(RES_PART_LIST, {std::stoi(words[1])});
            return *list;
        };
        const KeyPress control_a{key_a, true, false};
        const std::map<std::string, std::function<void()>> verbs = {
            {"add", [&] { PressWithKeypad(window, RES_ADD, words[1]); }},
            {"load", [&] { PressWithKeypad(window, RES_LOAD, words[1]); }},
            {"enter", [&] { window.PressKey({key_return}); }},
            {"escape", [&] { window.PressKey({key_escape}); }},
            {"all", [&] { window.PressKey(control_a); }},
            {"cancel", [&] { window.PressButton(id_cancel); }},
            {"ask", [&] { window.PressButton(RES_ASK_QUANTITY); }},
            {"filter", [&] { window.PressButton(tools.at(words[1])); }},
            {"unit", [&] { window.ChooseEntry(RES_UNIT, words[1] == "inch" ? 1 : 0); }},
            {"place", [&] { EXPECT_EQ(Words("place " + Place(window)), Lines(words.begin(), words.end() - 1)); }},
            // In the list's window, by row.
            {"hide", [&] { list->PressCloseBox(); }},
            {"remove", [&] { with_row().PressButton(RES_REMOVE); }},
            {"change", [&] { PressWithKeypad(with_row(), RES_CHANGE_QUANTITY, words[2]); }},
            // In the browser.
            {"go", [&] { EXPECT_TRUE(session_->Go(Qt(words[1]), Qt(words[2]))); }},
            {"select",
             [&] {
                 QStringList names;
                 std::transform(words.begin() + 1, words.end() - 1, std::back_inserter(names), Qt);
                 EXPECT_TRUE(session_->SelectParts(names));
             }},
            {"first",
             [&] {
                 auto ids = session_->Library()->Ids(session_->ListView()).value();
                 ids.resize(std::stoul(words[1]));
                 session_->Select(ids);
             }},
            {"none", [&] { session_->Select({}); }},
            {"sort", [&] { session_->SortBy(PartColumn::Thickness, true); }},
            // On the disk.
            {"lose", [&] { EXPECT_TRUE(fs::remove(folder.Path("Work/" + words[1]))); }},
            {"vanish", [&] { EXPECT_TRUE(fs::remove(LibraryFile(Qt(words[1])).toStdString())); }},
            {"delete",
             [&] {
                 LibraryProblem problem;
                 const auto writer = CSqliteWriter::Open(LibraryFile(session_->CurrentServer()), problem);
                 EXPECT_TRUE(writer != nullptr && writer->Begin() &&
                             writer->RemovePart(session_->CurrentFolder().path, Qt(words[1])) && writer->Commit());
             }},
            {"disk",
             [&] {
                 disk_.emplace(folder.Path("Work"), "2m");
                 words[1] == "readonly" ? disk_->SetReadOnly(true) : disk_->Fill(std::stoul(words[1]));
             }},
        };
        verbs.at(words[0])();
    }
    void PressWithKeypad(CScriptedWindow& window, int button, const std::string& quantity)
    {
        if (quantity == "-") {
            windows.Play(RES_QUANTITY_KEYPAD, {user::Press(id_cancel)});
        } else if (!quantity.empty()) {
            windows.Play(RES_QUANTITY_KEYPAD, {user::Type(RES_QUANTITY, WidenText(quantity)), user::Press(id_ok)});
        }
        window.PressButton(button);
    }
    // Where the dialog stands, as its operator sees it.
    [[nodiscard]] std::string Place(const CScriptedWindow& window) const
    {
        const bool by_thickness = session_->ListView().sort == PartColumn::Thickness && session_->ListView().descending;
        std::string place =
            session_->CurrentServer().toStdString() + " " + session_->CurrentFolder().path.toStdString();
        place += " cursor " + std::to_string(session_->ServerCursor());
        place +=
            window.SelectedEntry(RES_UNIT) == 1 && session_->ShownUnit() == DisplayUnit::Inch ? " inch" : " metric";
        place += by_thickness ? " by thickness" : "";
        for (const auto& [name, command] : tools) {
            place += window.pressedTools.contains(command) ? " " + name : "";
        }
        return place + " " + std::to_string(session_->ListView().filter) +
               (window.Check(RES_ASK_QUANTITY) ? " ask" : "");
    }
    // Against the part's library, unless that has vanished meanwhile. The content of a file belongs to the part that it
    // is named after on the disk, which for two parts that differ only in case is the one staged later.
    void CheckPart(const PartRecord& record, const Lines& files) const
    {
        LibraryProblem problem;
        const auto library = CSqliteLibrary::Open(LibraryFile(Qt(Narrow(record.serverName))), problem);
        if (library == nullptr) {
            return;
        }
        const QString part_folder = Qt(Narrow(record.folderName));
        const auto part = library->FindPart(part_folder, Qt(Narrow(record.PartName)));
        ASSERT_TRUE(part.has_value());
        EXPECT_EQ(part->comment.toStdU16String(), record.PartComment);
        EXPECT_EQ(part->material.toStdU16String(), record.MaterialType);
        EXPECT_EQ(part->machine.toStdU16String(), record.MachineName);
        EXPECT_EQ(part->thickness / 10000.0, record.Thickness);
        for (const fs::path native : files) {
            const auto owner = library->FindPart(part_folder, Qt(native.stem().string()));
            ASSERT_TRUE(owner.has_value()) << native;
            const auto kind = std::ranges::find(file_kinds, native.extension().u16string(), &FileKind::extension);
            EXPECT_TRUE(ReadBytes(native) == library->ReadFile(owner->id, kind->slot, 1 << 20)->toStdString())
                << native;
        }
    }
    [[nodiscard]] QString LibraryFile(const QString& server) const
    {
        return CLibraryFolder(Qt(folder.Path("Libraries").string())).FileOf(server);
    }

    std::shared_ptr<CBrowserSession> session_;
    std::optional<CMountedDisk> disk_; // on the working folder
};

} // namespace partkeep
