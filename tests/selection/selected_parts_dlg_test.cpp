#include "selection/selected_parts_dlg.h"

#include "settings/process_values.h"
#include "tests/support/scripted_window.h"

namespace partkeep {
namespace {

// Owner for the window under test; nothing of its own happens in it.
struct CQuietHandler : IDialogHandler {
    void OnInitDialog() override {}
    void OnCommand(int) override {}
};

class SelectedParts : public ::testing::Test {
protected:
    SelectedParts() { TheProcessValues().languageId = 1; }

    // In a run of the owner, with the window made.
    void Run(const std::function<void()>& test)
    {
        windows_.Play(RES_SELECTION_DIALOG, {[&](CScriptedWindow&) {
                          EXPECT_TRUE(dialog_.Create(owner_));
                          dialog_.InitColumns();
                          window_ = windows_.Find(RES_SELECTED_PARTS_DIALOG);
                          test();
                          dialog_.EmptyAndDestroy();
                          owner_.EndModal(id_cancel);
                      }});
        EXPECT_EQ(owner_.RunModal(), id_cancel);
    }

    void Add(std::u16string name, std::u16string folder = u"F", std::u16string quantity = u"1")
    {
        PartRecord& part = dialog_.selectedParts.emplace_back();
        part.PartName = std::move(name);
        part.serverName = u"S";
        part.folderName = std::move(folder);
        part.Qty = std::move(quantity);
        dialog_.AddLastPartRow();
    }

    // "name|path|quantity " per record; what the rows show must be the same.
    std::u16string Parts() const
    {
        std::u16string records;
        std::u16string rows;
        for (const PartRecord& part : dialog_.selectedParts) {
            records += part.PartName + u"|" + part.serverName + u"\\" + part.folderName + u"|" + part.Qty + u" ";
        }
        for (const ScriptedRow& row : window_->controls.at(RES_PART_LIST).rows) {
            rows += row.cells.at(0) + u"|" + row.cells.at(1) + u"|" + row.cells.at(2) + u" ";
        }
        EXPECT_EQ(rows, records);
        return records;
    }

    Recorder recorder_;
    CScriptedWindows windows_{recorder_};
    CQuietHandler owner_handler_;
    CEventDoor door_{windows_};
    CDialogEntrance owner_{door_, selection_dialog_template, owner_handler_};
    CSelectedPartsDlg dialog_{door_, nullptr};
    CScriptedWindow* window_ = nullptr;
};

TEST_F(SelectedParts, OpensHiddenAndListsInOrderOfAdding)
{
    Run([this] {
        EXPECT_FALSE(window_->visible);
        EXPECT_EQ(window_->owner, &owner_.Window());
        Add(u"Z");
        Add(u"A", u"");
        Add(u"M", u"x", u"007");
        EXPECT_EQ(Parts(), u"Z|S\\F|1 A|S\\|1 M|S\\x|007 ");
        owner_.CallBegins();
        window_->SelectRows(RES_PART_LIST, {0});
        window_->PressButton(RES_REMOVE);
        EXPECT_EQ(Parts(), u"Z|S\\F|1 A|S\\|1 M|S\\x|007 ") << "a call is under way, though no handler is";
        owner_.CallEnds();
        window_->Events().OnPaint();
        EXPECT_EQ(Parts(), u"A|S\\|1 M|S\\x|007 ");
    });
}

// The list begins as A to E, each row selected by a key or by number before what is played.
TEST_F(SelectedParts, KeysWorkTheList)
{
    const auto select = [](std::set<int> rows) {
        return [=](CScriptedWindow& window) { window.SelectRows(RES_PART_LIST, rows); };
    };
    const auto add = [this](const char16_t* name) { return [=, this](CScriptedWindow&) { Add(name); }; };
    const UserAction remove = user::Key(key_delete);
    const UserAction back = user::Key(key_z, true);
    // Behind what is played, the names, and the row where keys go on, as it was told last; -1: it was not.
    const std::tuple<const char*, std::vector<UserAction>, const char16_t*, int> rows[] = {
        {"nothing selected", {remove, back}, u"ABCDE", -1},
        {"nothing selected, by the button", {user::Press(RES_REMOVE)}, u"ABCDE", -1},
        {"second and fourth", {select({1, 3}), user::Press(RES_REMOVE)}, u"ACE", 2},
        {"neighbours", {select({0, 1, 2}), user::Press(RES_REMOVE)}, u"DE", 0},
        {"all, and one again", {user::Key(key_a, true), user::Press(RES_REMOVE), add(u"A")}, u"A", -1},
        {"one behind what is left", {select({0}), remove, add(u"A")}, u"BCDEA", 0},
        {"the next row", {select({1}), remove}, u"ACDE", 1},
        {"behind several", {select({0, 2}), remove}, u"BDE", 1},
        {"the last", {select({3, 4}), user::Press(RES_REMOVE)}, u"ABC", 2},
        {"all", {user::Key(key_a, true), remove}, u"", -1},
        {"all, and all back in their order", {user::Key(key_a, true), remove, back}, u"ABCDE", 4},
        {"back at the end, once", {select({1, 3}), remove, back, back}, u"ACEBD", 4},
        {"the last removal first", {select({0}), remove, select({0}), remove, back, back}, u"CDEBA", 4},
        {"not what was added again", {select({0, 1}), remove, add(u"B"), back}, u"CDEBA", 4},
        {"other keys are the list's",
         {user::Key(key_a), user::Key(key_delete, true), user::Key(key_delete, false, true), user::Key(key_z),
          user::Key(key_z, true, true)},
         u"ABCDE",
         -1},
    };
    for (const auto& [label, plays, left, told] : rows) {
        SCOPED_TRACE(label);
        Run([&, &plays = plays, left = left, told = told] {
            for (const char16_t* name : {u"A", u"B", u"C", u"D", u"E"}) {
                Add(name);
            }
            recorder_.lines.clear();
            for (const UserAction& play : plays) {
                play(*window_);
            }
            std::string focus;
            for (const std::string& line : recorder_.Take()) {
                focus = line.find("FocusRow") != std::string::npos ? line : focus;
            }
            std::u16string names;
            Parts();
            for (const PartRecord& part : dialog_.selectedParts) {
                names += part.PartName;
            }
            EXPECT_EQ(names, left);
            EXPECT_EQ(window_->Text(RES_PARTS_COLLECTED), WidenText(names.empty() ? "" : std::to_string(names.size())));
            EXPECT_EQ(focus, told < 0 ? "" : "250: FocusRow 233 " + std::to_string(told));
        });
    }
}

TEST_F(SelectedParts, ChangeQtyGivesAllSelectedRowsTheSameText)
{
    Run([this] {
        Add(u"A");
        Add(u"A", u"Other");
        Add(u"B");
        window_->PressButton(RES_CHANGE_QUANTITY); // nothing selected: no keypad opens
        window_->SelectRows(RES_PART_LIST, {0, 2});
        windows_.Play(RES_QUANTITY_KEYPAD, {user::Press(RES_DIGIT_5), user::Press(RES_CANCEL)});
        window_->PressButton(RES_CHANGE_QUANTITY);
        EXPECT_EQ(Parts(), u"A|S\\F|1 A|S\\Other|1 B|S\\F|1 ");
        EXPECT_TRUE(windows_.Find(RES_SELECTION_DIALOG)->inputEnabled);

        const auto look = [this](CScriptedWindow& keypad) {
            EXPECT_EQ(keypad.Text(RES_QUANTITY), u"");
            EXPECT_FALSE(windows_.Find(RES_SELECTION_DIALOG)->inputEnabled);
        };
        for (const auto& [ask, text] :
             {std::pair(user::Press(RES_CHANGE_QUANTITY), u"025"), {user::Key(key_f2), u"7"}}) {
            windows_.Play(RES_QUANTITY_KEYPAD, {look, user::Type(RES_QUANTITY, text), user::Press(RES_OK)});
            ask(*window_);
            EXPECT_EQ(Parts(), u"A|S\\F|" + std::u16string(text) + u" A|S\\Other|1 B|S\\F|" + text + u" ");
            EXPECT_TRUE(windows_.Find(RES_SELECTION_DIALOG)->inputEnabled);
        }
    });
}

TEST_F(SelectedParts, EveryWayToCloseItOnlyHidesIt)
{
    Run([this] {
        for (const UserAction& close : {user::close_box, user::Key(key_escape), user::Key(key_return)}) {
            Add(u"A");
            dialog_.Show();
            window_->PressButton(RES_PARTS_COLLECTED);
            EXPECT_TRUE(window_->visible);
            const auto before = Parts();
            close(*window_);
            EXPECT_FALSE(window_->visible);
            EXPECT_EQ(Parts(), before);
        }
        recorder_.lines.clear();
        dialog_.EmptyAndDestroy();
        dialog_.EmptyAndDestroy();
        EXPECT_EQ(recorder_.Take(), Lines{"250: Destroy"});
        EXPECT_FALSE(dialog_.WindowExists());
        EXPECT_TRUE(dialog_.selectedParts.empty());
    });
}

TEST_F(SelectedParts, CollectsWithoutAWindowAndListsAllOfItInALaterOne)
{
    EXPECT_FALSE(dialog_.Create(owner_) || owner_.EndModal(id_ok)) << "outside a run";
    for (const std::u16string names : {u"A", u"AB"}) {
        Run([&] {
            CSelectedPartsDlg late(door_, nullptr);
            windows_.canMakeWindows = false;
            EXPECT_FALSE(late.Create(owner_));
            for (const char16_t name : names) {
                late.selectedParts.emplace_back().PartName = name;
                late.AddLastPartRow();
                late.Show();
            }
            windows_.canMakeWindows = true;
            EXPECT_TRUE(late.Create(owner_));
            late.InitColumns();
            late.AddAllRows();
            std::u16string shown;
            for (const ScriptedRow& row : windows_.existing.back()->controls.at(RES_PART_LIST).rows) {
                shown += row.cells.at(0);
            }
            EXPECT_EQ(shown, names);
            EXPECT_EQ(windows_.existing.back()->Text(RES_PARTS_COLLECTED), names.size() == 1 ? u"1" : u"2");
            IDialogEvents& events = windows_.existing.back()->Events();
            late.EmptyAndDestroy();
            const std::size_t noted = recorder_.lines.size();
            events.OnCommand(id_cancel);
            EXPECT_EQ(recorder_.lines.size(), noted) << "a window that has gone hides no more";
        });
    }
}

} // namespace
} // namespace partkeep
