// An operator and an importer by turns: session_monkey COUNT [FIRST]. A game is up to 120 random actions, of a browser
// session as the component and a pane use it, and of another process that changes its library meanwhile. A plain model
// of the library knows after each of them what must be listed, selected and delivered. Some actions meet trouble of the
// machine: they may fail, but deliver nothing wrong, and all is as it was when the trouble has gone. Game number n is
// always the same; the first that does not hold ends the program. Under packaging/with-postgres the library is in a
// database.
#include "fuzz/monkey_faults.h"
#include "partlibrary/library/library_text.h"
#include "partlibrary/session/browser_session.h"
#include "platform/files.h"
#include "tests/partlibrary/library_fixture.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <thread>
#include <type_traits>
#include <unistd.h>

namespace partkeep {
namespace {

namespace fs = std::filesystem;

constexpr int most_actions = 120;
constexpr int first_edit = 13;                         // of the actions
constexpr std::chrono::milliseconds told_before{2000}; // for so long what a database told counts as its state
const std::array<QString, 4> folders{QString(), QStringLiteral("A"), QStringLiteral("A\\B"), QStringLiteral("C")};
const std::array<QString, 8> names{QStringLiteral("P1"),  QStringLiteral("P2"),    QStringLiteral("P10"),
                                   QStringLiteral("Q"),   QStringLiteral("PLATE"), QStringLiteral("PLATE-1"),
                                   QStringLiteral("B-1"), QStringLiteral("Z9")};
const std::array<QString, 6> searches{QString(),           QStringLiteral("p"),       QStringLiteral("pl"),
                                      QStringLiteral("1"), QStringLiteral("plate 1"), QStringLiteral("m2")};
const QString server = QStringLiteral("SRV1");

struct ModelPart {
    QString folder;
    QString name;
    int version = 0;

    [[nodiscard]] PartAttributes Attributes() const { return {version, u'M' + QString::number(version % 3), {}, {}}; }
    [[nodiscard]] bool Matches(const QString& search) const
    {
        const QString text = (name + u'\n' + Attributes().material).toLower();
        const QStringList words = search.split(u' ', Qt::SkipEmptyParts);
        return std::all_of(words.begin(), words.end(), [&text](const QString& word) { return text.contains(word); });
    }
};

// Tells the version and the slot in every block, so that a mixture shows.
QByteArray ContentOf(int version, FileSlot slot)
{
    const QByteArray mark = QByteArray::number(version * 100 + static_cast<int>(slot)) + ' ';
    return mark.repeated(version % 5 == 0 ? 20000 : 1 + version % 7);
}

const fs::path& Place()
{
    static const fs::path place = fs::path(fs::exists("/dev/shm") ? "/dev/shm" : fs::temp_directory_path()) /
                                  ("partkeep-session-" + std::to_string(getpid()));
    return place;
}

long game = 0;
std::string trouble_text; // of the action

void Require(bool holds, const std::string& what)
{
    if (!holds) {
        std::cerr << "game " << game << " does not hold: " << what << trouble_text << std::endl;
        std::abort();
    }
}

class CGame {
public:
    explicit CGame(long number) : random_(static_cast<unsigned>(number))
    {
        fs::remove_all(Place());
        fs::create_directories(Place() / "out");
        LibraryProblem problem;
        Require(libraries_.At(server)->Create(false, problem), "a library is made");
        for (int i = 0; i < 6; ++i) {
            PutPart(folders[static_cast<std::size_t>(i) % 3], names[static_cast<std::size_t>(i)]);
        }
        session_ = std::make_unique<CBrowserSession>(libraries_.Places());
        session_->SetTargetFolder(CorePath((Place() / "out").string()));
        session_->SetDataKind(-1);
    }

    int Play()
    {
        for (action_ = 0; action_ < most_actions; ++action_) {
            const auto action = static_cast<int>(Next() % 17);
            Next() % 12 == 0 && action < first_edit ? ActInTrouble(action) : Act(action);
            Compare();
        }
        return action_;
    }

private:
    unsigned Next() { return static_cast<unsigned>(random_() >> 8); }
    const QString& Folder() { return folders[Next() % folders.size()]; }
    const QString& Name() { return names[Next() % names.size()]; }

    void ActInTrouble(int action)
    {
        trouble_ = Next();
        trouble_text = ", in trouble " + std::to_string(*trouble_);
        Act(action);
        trouble_.reset();
        trouble_text.clear();
        listing_.reset();
        if (session_->Library() == nullptr) { // only the shown server is asked anew before ten seconds are over
            session_->Go(server, {});
        }
        session_->Refresh();
    }

    // Calls the session, in the trouble that there may be. Without memory it has no answer: whoever calls it for a host
    // makes one.
    template <class Call>
    std::invoke_result_t<Call> Ask(const Call& call)
    {
        try {
            std::optional<CMonkeyFault> fault;
            trouble_ ? void(fault.emplace(*trouble_, ToUtf8(libraries_.FileOf(server)))) : void();
            return call();
        } catch (const std::bad_alloc&) {
            Require(trouble_.has_value(), "memory is there");
            return std::invoke_result_t<Call>();
        }
    }

    // What a database told a moment ago may be told once more, and after that moment no longer.
    template <class Call, class Holds>
    std::invoke_result_t<Call> AskUntil(const Call& call, const Holds& holds)
    {
        auto answer = Ask(call);
        if (InDatabase() && !holds(answer)) {
            std::this_thread::sleep_for(told_before);
            answer = Ask(call);
        }
        return answer;
    }

    void Act(int action)
    {
        const QString folder = Folder();
        const QString search = searches[Next() % searches.size()];
        const auto column = static_cast<PartColumn>(Next() % 5);
        const bool first = Next() % 2 == 0;
        switch (action) {
        case 0:
        case 1:
            Ask([&] { session_->Go(server, folder); });
            break;
        case 2:
            Ask([&] { session_->SetCurrentFolder(ToWide(folder)); });
            break;
        case 3:
        case 4:
            Ask([&] { session_->SearchFor(search); });
            break;
        case 5:
            Ask([&] { session_->SortBy(column, first); });
            break;
        case 6:
            SelectSome();
            break;
        case 7:
            SelectAll();
            break;
        case 8:
            Load();
            break;
        case 9:
            Ask([&] { session_->Refresh(); });
            break;
        case 10:
            Ask([&] { session_->SearchIn(first ? SearchScope::Folder : SearchScope::Server); });
            break;
        case 11:
            ReadByPath(folder, Name());
            break;
        case 12:
            Ask([&] { session_->RefreshPartList(); });
            break;
        default:
            Edit(action);
        }
    }

    // What somebody else does.
    void Edit(int action)
    {
        const QString& folder = Folder();
        const QString& name = Name();
        const QString& other = Name();
        const auto found = Find(folder, name); // a name of its own for each, since lambdas take them
        const PartId id = found.first;
        ModelPart* const part = found.second;
        switch (action) {
        case 14:
            Change([&](ILibraryWriter& writer) {
                Require(writer.RemovePart(folder, name) == (part != nullptr), "a part that is there can be removed");
                parts_.erase(id);
            });
            break;
        case 15:
            Change([&](ILibraryWriter& writer) { Move(writer, id, part, folder, other); });
            break;
        case 13: // taken back
            if (LibraryProblem problem; const auto writer = libraries_.At(server)->Edit(problem)) {
                Require(writer->Begin(), "a change can begin");
                writer->RemovePart(folder, name);
            }
            break;
        default:
            PutPart(folder, name);
        }
    }

    void Move(ILibraryWriter& writer, PartId id, ModelPart* part, const QString& folder, const QString& other)
    {
        if (part == nullptr) {
            return;
        }
        const bool taken = other != part->name && Find(folder, other).second != nullptr;
        const auto place = writer.Library().FindFolder(folder);
        Require(place.has_value(), "a folder with a part is there");
        Require(writer.MovePart(id, place->id, other) != taken, "a part moves to a name that is free");
        part->name = taken ? part->name : other;
    }

    template <class Action>
    void Change(const Action& action)
    {
        LibraryProblem problem;
        const auto writer = libraries_.At(server)->Edit(problem);
        Require(writer != nullptr && writer->Begin(), "a change can begin");
        action(*writer);
        Require(writer->Commit(), "a change can be committed");
        listing_.reset(); // a list narrows one of the same state
    }

    void PutPart(const QString& folder, const QString& name)
    {
        const int version = ++versions_;
        const ModelPart part{folder, name, version};
        Change([&](ILibraryWriter& writer) {
            const auto place = writer.MakeFolder(folder);
            const auto id = place ? writer.PutPart(*place, name, part.Attributes()) : std::nullopt;
            Require(id && writer.PutFile(*id, FileSlot::Iga, ContentOf(version, FileSlot::Iga)) &&
                        writer.PutFile(*id, FileSlot::Ncd, ContentOf(version, FileSlot::Ncd)),
                    "a part can be put");
            parts_[*id] = part;
        });
    }

    std::pair<PartId, ModelPart*> Find(const QString& folder, const QString& name)
    {
        for (auto& [id, part] : parts_) {
            if (part.folder == folder && part.name == name) {
                return {id, &part};
            }
        }
        return {0, nullptr};
    }

    // What the operator does.
    void SelectSome()
    {
        if (session_->Library() == nullptr || session_->ShowsResults()) {
            return;
        }
        std::vector<PartId> ids = session_->Library()->Ids(session_->ListView()).value_or(std::vector<PartId>());
        const unsigned mask = Next();
        std::size_t place = 0;
        std::erase_if(ids, [&](PartId) { return (mask >> (place++ % 8) & 1) == 0; });
        const std::size_t count = ids.size();
        Ask([&] { session_->Select(std::move(ids)); });
        Require(trouble_ || session_->Selection().size() == count, "what is listed can be selected");
    }

    void SelectAll()
    {
        const bool listed = session_->CurrentFolder().id != 0 && !session_->ShowsResults();
        const std::size_t count = listed ? Listed().size() : 0;
        Ask([&] { session_->SelectAllParts(1); });
        Require(trouble_ || session_->Selection().size() == count, "all that is listed is selected");
    }

    void Load()
    {
        for (std::int16_t i = 0; i < session_->GetSelectedPartCount(); ++i) {
            Meanwhile();
            const PartId id = session_->Selection()[static_cast<std::size_t>(i)];
            const auto known = parts_.find(id);
            const QString name = known != parts_.end() ? known->second.name : QString();
            const auto told = AskUntil([&] { return session_->GetSelectedPart(i); },
                                       [&](const auto& part) { return (part ? part->name : QString()) == name; });
            if (known == parts_.end()) {
                Require(!told || told->name.isEmpty(), "a part that has gone has no name");
                continue;
            }
            if (trouble_ && (!told || told->name.isEmpty())) {
                continue;
            }
            Require(told && told->name == name, "a selected part is called by its name");
            Require(told->server == server && told->folder == known->second.folder, "and where it is");
            ReadByPath(told->folder, told->name);
        }
    }

    // Between the steps of a load somebody changes something, or nothing happens until what was told is old.
    void Meanwhile()
    {
        const unsigned what = Next() % 16;
        if (what < 2) {
            Edit(first_edit + static_cast<int>(Next() % 4));
        } else if (what == 2 && InDatabase()) {
            std::this_thread::sleep_for(told_before);
        }
    }

    void ReadByPath(const QString& folder, const QString& name)
    {
        const ModelPart* part = Find(folder, name).second;
        const std::u16string path = ToWide(folder.isEmpty() ? name : folder + u'\\' + name);
        const auto is_part = [&](const auto& row) {
            return row.has_value() == (part != nullptr) &&
                   (!row || (row->thickness == part->version && row->material == part->Attributes().material));
        };
        const auto row = AskUntil([&] { return session_->ReadPartAttributes(ToWide(server), path); }, is_part);
        Require(is_part(row) || (trouble_ && !row), "a part is found if it is there, with its attributes");
        std::vector<std::optional<ModelPart>> states;
        states.push_back(part != nullptr ? std::optional(*part) : std::nullopt);
        Meanwhile();
        part = Find(folder, name).second;
        InDatabase() ? void() : states.clear(); // a moment ago counts as now there
        states.push_back(part != nullptr ? std::optional(*part) : std::nullopt);
        CopyOneOf(states, name, path);
    }

    // In one of these states, whole; or not, where it may be in none, or there was trouble.
    void CopyOneOf(const std::vector<std::optional<ModelPart>>& states, const QString& name, const std::u16string& path)
    {
        for (const auto& old : fs::directory_iterator(Place() / "out")) {
            fs::remove(old);
        }
        const bool copied = Ask([&] { return session_->CopyPartFiles(ToWide(server), path); });
        const bool changed = states.front().has_value() != states.back().has_value() ||
                             (states.front() && states.front()->version != states.back()->version);
        std::map<std::string, std::string> got;
        for (const auto& file : fs::directory_iterator(Place() / "out")) {
            std::ifstream bytes(file.path(), std::ios::binary);
            got[file.path().filename().string()] = {std::istreambuf_iterator<char>(bytes), {}};
        }
        const bool fits = std::any_of(states.begin(), states.end(), [&](const auto& state) {
            auto files = got; // in trouble some may be missing
            for (const FileSlot slot : {FileSlot::Iga, FileSlot::Ncd}) {
                const auto file = files.find(ToUtf8(name + FromWide(KindOf(slot).extension)));
                const bool whole =
                    state && file != files.end() && file->second == ContentOf(state->version, slot).toStdString();
                whole ? void(files.erase(file)) : void();
                if (copied && !whole) {
                    return false;
                }
            }
            return files.empty();
        });
        Require(fits, "a copy is what was stored last");
        Require(copied || trouble_ || changed || !states.back(), "a part that is there is copied");
    }

    [[nodiscard]] std::set<PartId> Listed() const
    {
        const PartListView view = session_->ListView();
        std::set<PartId> listed;
        for (const auto& [id, part] : parts_) {
            const bool here = session_->ShowsResults() || part.folder == session_->CurrentFolder().path;
            if (here && part.Matches(view.search)) {
                listed.insert(id);
            }
        }
        return listed;
    }

    void Compare()
    {
        const std::size_t count = session_->Selection().size();
        Require(static_cast<std::size_t>(session_->GetSelectedPartCount()) == count, "a selection has its count");
        Require(!session_->ShowsResults() || count == 0, "nothing is selected among results");
        const auto left = std::distance(fs::directory_iterator(ToUtf8(libraries_.Folder())), fs::directory_iterator());
        Require(left == (InDatabase() ? 0 : 1), "nothing is left");
        Require(std::distance(fs::directory_iterator(Place()), fs::directory_iterator()) == 1, "nor beside the target");
        IPartLibrary* const library = session_->Library();
        if (library == nullptr || session_->CurrentFolder().id == 0) {
            return;
        }
        const auto ids = library->Ids(session_->ListView());
        Require(ids.has_value(), "a sound library is listed");
        const std::set<PartId> listed(ids->begin(), ids->end());
        Require(listed.size() == ids->size() && listed == Listed(), "a list shows what is there, once");
        Narrow(*library);
    }

    // Lists as the pane reads them, each narrowed from the one before where it can be.
    void Narrow(IPartLibrary& library)
    {
        const PartListView view = session_->ListView();
        auto listing = library.List(view, static_cast<qint64>(parts_.size()), listing_.get());
        listing->Finish();
        const auto ids = listing->Ids(0, listing->Count());
        Require(ids == library.Ids(view), "a list by steps has the rows of one at once, in their order");
        listing_ = std::move(listing);
    }

    CTestLibraries libraries_;
    std::mt19937 random_;
    int action_ = 0;
    std::optional<unsigned> trouble_; // which one the machine has at this moment
    std::unique_ptr<CBrowserSession> session_;
    std::unique_ptr<IPartListing> listing_;
    std::map<PartId, ModelPart> parts_;
    int versions_ = 0;
};

} // namespace
} // namespace partkeep

int main(int argc, char** argv)
{
    const long count = argc > 1 ? std::atol(argv[1]) : 1000;
    const long first = argc > 2 ? std::atol(argv[2]) : 0;
    long actions = 0;
    setenv("TMPDIR", std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp", 0);
    for (long number = first; number < first + count; ++number) {
        partkeep::game = number;
        actions += partkeep::CGame(number).Play();
    }
    std::filesystem::remove_all(partkeep::Place());
    std::cout << count << " games, " << actions << " actions, no fault\n";
}
