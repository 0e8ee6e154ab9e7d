#include "tests/desktop/operator_run.h"

#include "platform/files.h"
#include "resources/resource_ids.h"
#include "samples/sample_library.h"
#include "settings/process_values.h"
#include "tests/support/browser_signatures.h"

#include <sstream>

namespace partkeep {

namespace {

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

std::string Narrow(const std::u16string& text)
{
    return NarrowText(text, utf8_code_page);
}

Lines Words(const std::string& text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

QString Qt(const std::string& text)
{
    return QString::fromStdString(text);
}

const std::map<std::string, int> tools = {
    {"PART", RES_FILTER_PART}, {"NCT", RES_FILTER_NCT}, {"LASER", RES_FILTER_LASER}, {"MARVEN", RES_FILTER_MARVEN}};

// In terms of each other, too.
const std::map<std::string, std::string> call_groups = {
    {"start", "SetDisplayUnit SetPartFilter SetServerList MoveFocus ConnectServer SetCurrentServer"},
    {"folder", "OpenFolderSelection SetCurrentFolder"},
    {"count", "GetSelectedPartCount"},
    {"none", "GetSelectedPartCount GetCurrentServer"},
    {"go", "none"},
    {"click", "count GetSelectedPart ReadPartAttributes GetCurrentFolder ReadPartImage*3 GetLastStatus"},
    {"png", "SetTargetFolder SetDataKind GetPreviewFileTitle"},
    {"into", "SetDataKind SetTargetFolder"},
    {"named", "GetCurrentServer GetCurrentFolder GetSelectedPart"},
    {"copy", "SetDataKind CopyPartFiles"},
    {"staged", "named named ReadPartAttributes copy"},
    {"staged2", "staged copy"},
    {"clear", "SelectAllParts"},
    {"leave", "GetServerList GetCurrentServer GetViewStateCount GetViewState DisconnectServer"},
};

} // namespace

std::string Joined(const Lines& texts)
{
    std::string joined;
    for (const std::string& text : texts) {
        joined += (joined.empty() ? "" : "; ") + text;
    }
    return joined;
}

std::string ServersFile(const std::string& server, const std::string& folder, const std::string& unit,
                        const std::string& servers, const std::string& view)
{
    std::string text = server + "\r\n" + folder + "\r\n" + unit + "\r\n";
    std::string values = servers + " -9999 30 19280 1 0 " + view + " 0";
    for (int column = 0; column < 8; ++column) {
        values += " -1 0 0";
    }
    for (const std::string& value : Words(values)) {
        text += value + "\r\n";
    }
    return text;
}

std::string OptionsFile(bool prompt, int filter)
{
    return std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<ZanPartkeepReadConfig>\r\n  <InputNoFlag>") +
           (prompt ? "true" : "false") + "</InputNoFlag>\r\n  <FilterState>" + std::to_string(filter) +
           "</FilterState>\r\n</ZanPartkeepReadConfig>";
}

Lines ExpandCalls(const std::string& shorthand)
{
    Lines calls;
    for (const std::string& word : Words(shorthand)) {
        const std::size_t star = word.find('*');
        const auto group = call_groups.find(word.substr(0, star));
        const Lines names = group != call_groups.end() ? ExpandCalls(group->second) : Lines{word.substr(0, star)};
        for (int left = star == std::string::npos ? 1 : std::stoi(word.substr(star + 1)); left > 0; --left) {
            calls.insert(calls.end(), names.begin(), names.end());
        }
    }
    return calls;
}

COperatorRun::COperatorRun(const fs::path& source)
{
    fs::create_directory(folder.Path("Work"));
    fs::create_directory(folder.Path("Install"));
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

COperatorRun::~COperatorRun()
{
    TheProcessValues() = {};
}

void COperatorRun::Script(const std::string& steps)
{
    std::vector<UserAction> actions;
    for (const std::string& step : Steps(steps)) {
        actions.emplace_back([this, step](CScriptedWindow& window) {
            SCOPED_TRACE(step);
            if (step.starts_with("place ")) {
                EXPECT_EQ(Words("place " + Place(window)), Words(step));
                return;
            }
            Lines words = Words(step);
            words.emplace_back(); // for a step without a quantity
            Do(window, words);
        });
    }
    windows.Play(RES_SELECTION_DIALOG, std::move(actions));
}

// Steps that open the keypad take the quantity that it is given, "-" to cancel it, or nothing where it does not open.
void COperatorRun::Do(CScriptedWindow& window, const Lines& words)
{
    CScriptedWindow* const list = windows.Find(RES_SELECTED_PARTS_DIALOG);
    const auto select_row = [&] { list->SelectRows(RES_PART_LIST, {std::stoi(words[1])}); };
    const std::map<std::string, std::function<void()>> verbs = {
        {"add", [&] { PressWithKeypad(window, RES_ADD, words[1]); }},
        {"load", [&] { PressWithKeypad(window, RES_LOAD, words[1]); }},
        {"enter", [&] { window.PressKey({key_return}); }},
        {"escape", [&] { window.PressKey({key_escape}); }},
        {"all",
         [&] {
             window.PressKey({key_a, true, false});
         }},
        {"cancel", [&] { window.PressButton(id_cancel); }},
        {"ask", [&] { window.PressButton(RES_ASK_QUANTITY); }},
        {"filter", [&] { window.PressButton(tools.at(words[1])); }},
        {"unit", [&] { window.ChooseEntry(RES_UNIT, words[1] == "inch" ? 1 : 0); }},
        // In the list's window, by row.
        {"hide", [&] { list->PressCloseBox(); }},
        {"remove",
         [&] {
             select_row();
             list->PressButton(RES_REMOVE);
         }},
        {"change",
         [&] {
             select_row();
             PressWithKeypad(*list, RES_CHANGE_QUANTITY, words[2]);
         }},
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

HostResult COperatorRun::Play(PartkeepReadImpl& host, bool multi, const std::string& steps)
{
    Script(steps);
    return multi ? host.InvokePartkeepMultiSelection(1) : host.InvokePartkeep();
}

void COperatorRun::PressWithKeypad(CScriptedWindow& window, int button, const std::string& quantity)
{
    if (quantity == "-") {
        windows.Play(RES_QUANTITY_KEYPAD, {user::Press(id_cancel)});
    } else if (!quantity.empty()) {
        windows.Play(RES_QUANTITY_KEYPAD, {user::Type(RES_QUANTITY, WidenText(quantity)), user::Press(id_ok)});
    }
    window.PressButton(button);
}

// Where the dialog stands, as its operator sees it.
std::string COperatorRun::Place(const CScriptedWindow& window) const
{
    const bool by_thickness = session_->ListView().sort == PartColumn::Thickness && session_->ListView().descending;
    std::string place = session_->CurrentServer().toStdString() + " " + session_->CurrentFolder().path.toStdString();
    place += " cursor " + std::to_string(session_->ServerCursor());
    place += window.SelectedEntry(RES_UNIT) == 1 && session_->ShownUnit() == DisplayUnit::Inch ? " inch" : " metric";
    place += by_thickness ? " by thickness" : "";
    for (const auto& [name, command] : tools) {
        place += window.pressedTools.contains(command) ? " " + name : "";
    }
    return place + " " + std::to_string(session_->ListView().filter) + (window.Check(RES_ASK_QUANTITY) ? " ask" : "");
}

std::string COperatorRun::Records(PartkeepReadImpl& host)
{
    const std::u16string work = folder.Core(u"Work") + u"\\";
    Lines records;
    std::int32_t count = 0;
    host.NumberOfPartsSelected(&count);
    for (std::int32_t index = 0; index < count; ++index) {
        PartRecord part;
        host.GetPartInfo(index, &part.serverName, &part.folderName, &part.FilePathName, &part.SYFileName,
                         &part.NCFileName, &part.PartName, &part.PartComment, &part.MaterialType, &part.MachineName,
                         &part.MachineType, &part.Thickness, &part.Qty);
        std::string text = Narrow(part.PartName + u" x" + part.Qty + u" " + part.serverName + u"|" + part.folderName);
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
    return Joined(records);
}

QString COperatorRun::LibraryFile(const QString& server) const
{
    return CLibraryFolder(Qt(folder.Path("Libraries").string())).FileOf(server);
}

// Against the part's library, unless that has vanished meanwhile. The content of a file belongs to the part that it
// is named after on the disk, which for two parts that differ only in case is the one staged later.
void COperatorRun::CheckPart(const PartRecord& record, const Lines& files) const
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
        EXPECT_TRUE(ReadBytes(native) == library->ReadFile(owner->id, kind->slot)->toStdString()) << native;
    }
}

std::string COperatorRun::Files() const
{
    Lines files;
    const fs::path work = folder.Path("Work");
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(work)) {
        if (!entry.is_directory() || fs::is_empty(entry.path())) {
            files.push_back(fs::relative(entry.path(), work).string() + (entry.is_directory() ? "/" : ""));
        }
    }
    std::sort(files.begin(), files.end());
    return Joined(files);
}

Lines COperatorRun::Noted(const std::string& kind) const
{
    Lines found;
    for (const std::string& line : recorder.lines) {
        if (line.starts_with(kind + " ")) {
            found.push_back(line.substr(kind.size() + 1));
        }
    }
    return found;
}

const std::filesystem::path& SampleLibraries()
{
    static const CTemporaryFolder* const folder = new CTemporaryFolder; // until the process ends
    static const std::filesystem::path path = [] {
        QStringList made;
        LibraryProblem problem;
        const QString where = QString::fromStdString(folder->Path().string());
        EXPECT_TRUE(MakeSampleLibraries(where, false, made, problem)) << ProblemText(problem);
        return folder->Path();
    }();
    return path;
}

} // namespace partkeep
