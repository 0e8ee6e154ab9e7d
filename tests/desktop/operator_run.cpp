#include "tests/desktop/operator_run.h"

#include "platform/files.h"
#include "platform/text.h"
#include "resources/resource_ids.h"
#include "settings/process_values.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <sstream>

namespace partkeep {

namespace {

namespace fs = std::filesystem;

// Notes the name of each operation on its way to the session.
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
        return control_.Invoke(dispatch_id, kind, arguments, result);
    }
    void SetEventSink(std::function<void(std::int32_t)> sink) override { control_.SetEventSink(std::move(sink)); }

private:
    Recorder& recorder_;
    CSessionControl control_;
};

std::u16string Wide(const std::string& text)
{
    return WidenText(text, utf8_code_page);
}

std::string Narrow(const std::u16string& text)
{
    return NarrowText(text, utf8_code_page);
}

Texts Words(const std::string& text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

QString Qt(const std::string& text)
{
    return QString::fromStdString(text);
}

Texts BehindPrefix(const Texts& lines, const std::string& prefix)
{
    Texts found;
    for (const std::string& line : lines) {
        if (line.starts_with(prefix)) {
            found.push_back(line.substr(prefix.size()));
        }
    }
    return found;
}

const std::map<std::string, int> tools = {
    {"PART", RES_FILTER_PART}, {"NCT", RES_FILTER_NCT}, {"LASER", RES_FILTER_LASER}, {"MARVEN", RES_FILTER_MARVEN}};

const std::map<std::string, std::string> call_groups = {
    {"start", "SetDisplayUnit SetPartFilter SetServerList MoveFocus ConnectServer SetCurrentServer"},
    {"restart", "SetCurrentFolder SetDisplayUnit SetPartFilter SetServerList SetViewState MoveFocus ConnectServer "
                "SetCurrentServer"},
    {"folder", "OpenFolderSelection SetCurrentFolder"},
    {"count", "GetSelectedPartCount"},
    // A click for the server and one for the folder.
    {"go", "GetSelectedPartCount GetCurrentServer GetSelectedPartCount GetCurrentServer"},
    {"click", "GetSelectedPartCount GetSelectedPart ReadPartAttributes GetCurrentFolder ReadPartImage ReadPartImage "
              "ReadPartImage GetLastStatus"},
    {"png", "SetTargetFolder SetDataKind GetPreviewFileTitle"},
    {"into", "SetDataKind SetTargetFolder"},
    {"named", "GetCurrentServer GetCurrentFolder GetSelectedPart"},
    {"copy", "SetDataKind CopyPartFiles"},
    {"staged", "GetCurrentServer GetCurrentFolder GetSelectedPart GetCurrentServer GetCurrentFolder GetSelectedPart "
               "ReadPartAttributes SetDataKind CopyPartFiles"},
    {"staged2", "GetCurrentServer GetCurrentFolder GetSelectedPart GetCurrentServer GetCurrentFolder GetSelectedPart "
                "ReadPartAttributes SetDataKind CopyPartFiles SetDataKind CopyPartFiles"},
    {"clear", "SelectAllParts"},
    {"leave", "GetServerList GetCurrentServer GetViewStateCount GetViewState DisconnectServer"},
};

} // namespace

std::string Joined(const Texts& texts)
{
    std::string joined;
    for (const std::string& text : texts) {
        joined += (joined.empty() ? "" : " ") + text;
    }
    return joined;
}

std::string ServersFile(const std::string& server, const std::string& folder, const std::string& unit,
                        const Texts& servers, const std::string& view)
{
    std::string text = server + "\n" + folder + "\n" + unit + "\n";
    for (const std::string& name : servers) {
        text += name + "\n";
    }
    const Texts sort = Words(view);
    text += "-9999\n30\n19280\n1\n0\n" + sort[0] + "\n" + sort[1] + "\n0\n";
    for (int column = 0; column < 8; ++column) {
        text += "-1\n0\n0\n";
    }
    std::string stored;
    for (const char byte : text) {
        stored += byte == '\n' ? std::string("\r\n") : std::string(1, byte);
    }
    return stored;
}

std::string OptionsFile(bool prompt, int filter)
{
    return std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n<ZanPartkeepReadConfig>\r\n  <InputNoFlag>") +
           (prompt ? "true" : "false") + "</InputNoFlag>\r\n  <FilterState>" + std::to_string(filter) +
           "</FilterState>\r\n</ZanPartkeepReadConfig>";
}

Texts ExpandCalls(const std::string& shorthand)
{
    Texts calls;
    for (const std::string& word : Words(shorthand)) {
        const std::size_t star = word.find('*');
        const auto group = call_groups.find(word.substr(0, star));
        const Texts names = group != call_groups.end() ? Words(group->second) : Texts{word.substr(0, star)};
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

HostResult COperatorRun::Play(PartkeepReadImpl& host, bool multi, const Texts& steps)
{
    std::vector<UserAction> actions;
    for (const std::string& step : steps) {
        actions.emplace_back([this, step](CScriptedWindow& window) {
            SCOPED_TRACE(step);
            Do(window, step);
        });
    }
    windows.Play(RES_SELECTION_DIALOG, std::move(actions));
    return multi ? host.InvokePartkeepMultiSelection(1) : host.InvokePartkeep();
}

// "add", "load" and "change" take the quantity that the keypad is given, "-" to cancel it, or nothing where it
// does not open.
void COperatorRun::Do(CScriptedWindow& window, const std::string& step)
{
    Texts words = Words(step);
    const std::string verb = words.front();
    words.erase(words.begin());
    const std::string first = words.empty() ? "" : words.front();
    if (verb == "add" || verb == "load") {
        PlayKeypad(first);
        window.PressButton(verb == "add" ? RES_ADD : RES_LOAD);
    } else if (verb == "enter") {
        window.PressKey({key_return, false, false});
    } else if (verb == "cancel") {
        window.PressButton(id_cancel);
    } else if (verb == "escape") {
        window.PressKey({key_escape, false, false});
    } else if (verb == "all") {
        window.PressKey({key_a, true, false});
    } else if (verb == "ask") {
        window.PressButton(RES_ASK_QUANTITY);
    } else if (verb == "filter") {
        window.PressButton(tools.at(first));
    } else if (verb == "unit") {
        window.ChooseEntry(RES_UNIT, first == "inch" ? 1 : 0);
    } else if (verb == "place") {
        EXPECT_EQ(Joined(Words(Place(window))), Joined(words));
    } else if (verb == "remove" || verb == "change" || verb == "hide") {
        DoInList(verb, words);
    } else if (verb == "lose" || verb == "vanish" || verb == "disk" || verb == "delete") {
        DoOnDisk(verb, Joined(words));
    } else {
        DoInBrowser(verb, words);
    }
}

void COperatorRun::PlayKeypad(const std::string& quantity)
{
    if (quantity == "-") {
        windows.Play(RES_QUANTITY_KEYPAD, {user::Press(id_cancel)});
    } else if (!quantity.empty()) {
        windows.Play(RES_QUANTITY_KEYPAD, {user::Type(RES_QUANTITY, Wide(quantity)), user::Press(id_ok)});
    }
}

void COperatorRun::DoInBrowser(const std::string& verb, const Texts& words)
{
    QStringList names;
    for (const std::string& word : words) {
        names += Qt(word);
    }
    if (verb == "go") {
        EXPECT_TRUE(session_->OpenServer(names[0]));
        EXPECT_TRUE(session_->OpenFolder(names[1]));
    } else if (verb == "select") {
        EXPECT_TRUE(session_->SelectParts(names));
    } else if (verb == "first") {
        auto ids = session_->Library()->Parts().Ids(session_->ListView()).value();
        ids.resize(names[0].toULongLong());
        session_->Select(ids);
    } else if (verb == "none") {
        session_->Select({});
    } else if (verb == "sort") {
        session_->SortBy(PartColumn::Thickness, true);
    } else {
        ADD_FAILURE() << "no such step";
    }
}

void COperatorRun::DoOnDisk(const std::string& verb, const std::string& name)
{
    if (verb == "lose") {
        EXPECT_TRUE(fs::remove(folder.Path("Work/" + name)));
    } else if (verb == "vanish") {
        EXPECT_TRUE(fs::remove(fs::path(LibraryFile(Qt(name)).toStdString())));
    } else if (verb == "delete") {
        LibraryProblem problem;
        const auto writer = CLibraryWriter::Open(LibraryFile(session_->CurrentServer()), problem);
        const bool deleted = writer != nullptr && writer->Begin() &&
                             writer->RemovePart(session_->CurrentFolder().id, Qt(name)) && writer->Commit();
        EXPECT_TRUE(deleted);
    } else if (name == "readonly") {
        disk_.emplace(folder.Path("Work"));
        disk_->SetReadOnly(true);
    } else {
        disk_.emplace(folder.Path("Work"), "2m");
        disk_->Fill(std::stoul(name));
    }
}

void COperatorRun::DoInList(const std::string& verb, const Texts& words)
{
    CScriptedWindow* list = windows.Find(RES_SELECTED_PARTS_DIALOG);
    ASSERT_NE(list, nullptr);
    if (verb == "hide") {
        list->PressCloseBox();
        return;
    }
    list->SelectRows(RES_PART_LIST, {std::stoi(words[0])});
    PlayKeypad(words.size() > 1 ? words[1] : "");
    list->PressButton(verb == "remove" ? RES_REMOVE : RES_CHANGE_QUANTITY);
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
        place += window.pressedTools.count(command) != 0 ? " " + name : "";
    }
    return place + " " + std::to_string(session_->ListView().filter) + (window.Check(RES_ASK_QUANTITY) ? " ask" : "");
}

Texts COperatorRun::Records(PartkeepReadImpl& host)
{
    const std::u16string work = folder.Core(u"Work") + u"\\";
    Texts records;
    std::int32_t count = 0;
    host.NumberOfPartsSelected(&count);
    for (std::int32_t index = 0; index < count; ++index) {
        PartRecord part;
        host.GetPartInfo(index, &part.serverName, &part.folderName, &part.FilePathName, &part.SYFileName,
                         &part.NCFileName, &part.PartName, &part.PartComment, &part.MaterialType, &part.MachineName,
                         &part.MachineType, &part.Thickness, &part.Qty);
        CheckAttributes(part);
        std::string text = Narrow(part.PartName + u" x" + part.Qty + u" " + part.serverName + u"|" + part.folderName);
        std::string staged;
        for (const std::u16string& path : {part.FilePathName, part.SYFileName, part.NCFileName}) {
            if (path.empty()) {
                continue;
            }
            const std::size_t name = path.rfind(path_separator) + 1;
            const std::size_t end = name + part.PartName.size();
            EXPECT_TRUE(path.starts_with(work) && path.substr(name, end - name) == part.PartName) << Narrow(path);
            CheckFile(path, part.serverName, part.folderName);
            staged += staged.empty() ? " " + Narrow(path.substr(work.size(), name - 1 - work.size())) : "";
            staged += " " + Narrow(path.substr(end));
        }
        records.push_back(text + staged + (part.MachineType != 0 ? " type " + std::to_string(part.MachineType) : ""));
    }
    return records;
}

QString COperatorRun::LibraryFile(const QString& server) const
{
    return CLibraryFolder(Qt(folder.Path("Libraries").string())).FileOf(server);
}

// A library that has vanished meanwhile can't be compared with.
void COperatorRun::CheckAttributes(const PartRecord& record)
{
    LibraryProblem problem;
    const auto library = CPartLibrary::Open(LibraryFile(Qt(Narrow(record.serverName))), problem);
    if (library == nullptr) {
        return;
    }
    const auto part = library->FindPart(Qt(Narrow(record.folderName)), Qt(Narrow(record.PartName)));
    ASSERT_TRUE(part.has_value());
    EXPECT_EQ(part->comment.toStdU16String(), record.PartComment);
    EXPECT_EQ(part->material.toStdU16String(), record.MaterialType);
    EXPECT_EQ(part->machine.toStdU16String(), record.MachineName);
    EXPECT_EQ(part->thickness / 10000.0, record.Thickness);
}

// The content belongs to the part that the file is named after on the disk, which for two parts that differ only
// in case is the one staged later.
void COperatorRun::CheckFile(const std::u16string& path, const std::u16string& server,
                             const std::u16string& part_folder)
{
    LibraryProblem problem;
    const fs::path native = fs::path(NativePath(path));
    const auto library = CPartLibrary::Open(LibraryFile(Qt(Narrow(server))), problem);
    if (library == nullptr) {
        return;
    }
    const auto part = library->FindPart(Qt(Narrow(part_folder)), Qt(native.stem().string()));
    ASSERT_TRUE(part.has_value()) << native;
    for (const FileKind& kind : file_kinds) {
        if (Qt(native.extension().string()) == QString::fromUtf16(kind.extension)) {
            library->ReadFiles(part->id, SetOf(kind.slot), [&native](FileSlot, const QByteArray& content) {
                EXPECT_TRUE(ReadBytes(native) == content.toStdString()) << native;
                return true;
            });
        }
    }
}

Texts COperatorRun::Files() const
{
    Texts files;
    const fs::path work = folder.Path("Work");
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(work)) {
        if (!entry.is_directory() || fs::is_empty(entry.path())) {
            files.push_back(fs::relative(entry.path(), work).string() + (entry.is_directory() ? "/" : ""));
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

Texts COperatorRun::Messages() const
{
    return BehindPrefix(recorder.lines, "message ");
}

Texts COperatorRun::Calls() const
{
    return BehindPrefix(recorder.lines, "call ");
}

} // namespace partkeep
