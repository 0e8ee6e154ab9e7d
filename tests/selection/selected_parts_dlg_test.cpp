#include "selection/selected_parts_dlg.h"

#include "resources/resource_ids.h"
#include "settings/process_values.h"
#include "tests/support/scripted_window.h"

#include <gtest/gtest.h>

namespace partkeep {
namespace {

PartRecord Part(std::u16string name, std::u16string folder = u"Plates\\Thin", std::u16string quantity = u"1")
{
    PartRecord part;
    part.PartName = std::move(name);
    part.serverName = u"SRV1";
    part.folderName = std::move(folder);
    part.Qty = std::move(quantity);
    return part;
}

// Owner for the window under test; nothing of its own happens in it.
class CQuietHandler : public IDialogHandler {
public:
    void OnInitDialog() override {}
    void OnCommand(int) override {}
};

class SelectedParts : public ::testing::Test {
protected:
    SelectedParts()
    {
        TheProcessValues().languageId = 1;
        EXPECT_TRUE(owner_->CreateModeless(owner_handler_, nullptr));
        EXPECT_TRUE(dialog_.Create(*owner_));
        dialog_.InitColumns();
        window_ = windows_.Find(RES_SELECTED_PARTS_DIALOG);
    }

    void Add(std::vector<PartRecord> parts)
    {
        for (PartRecord& part : parts) {
            dialog_.selectedParts.push_back(std::move(part));
            dialog_.AddLastPartRow();
        }
        dialog_.Show();
    }

    // "name quantity" per record; what the rows show must be the same.
    std::vector<std::u16string> Parts() const
    {
        std::vector<std::u16string> records;
        std::vector<std::u16string> rows;
        for (const PartRecord& part : dialog_.selectedParts) {
            records.push_back(part.PartName + u"|" + part.serverName + u"\\" + part.folderName + u"|" + part.Qty);
        }
        for (const ScriptedRow& row : window_->controls.at(RES_PART_LIST).rows) {
            rows.push_back(row.cells.at(0) + u"|" + row.cells.at(1) + u"|" + row.cells.at(2));
        }
        EXPECT_EQ(rows, records);
        return records;
    }

    std::vector<std::u16string> Names() const
    {
        std::vector<std::u16string> names;
        for (const std::u16string& part : Parts()) {
            names.push_back(part.substr(0, part.find(u'|')));
        }
        return names;
    }

    Recorder recorder_;
    CScriptedWindows windows_{recorder_};
    CQuietHandler owner_handler_;
    std::unique_ptr<IDialogWindow> owner_ = windows_.Make(selection_dialog_template);
    CSelectedPartsDlg dialog_{windows_, nullptr};
    CScriptedWindow* window_ = nullptr;
};

TEST_F(SelectedParts, OpensHiddenWithItsColumnsAndTexts)
{
    const std::vector<std::string> expected{
        "101: CreateModeless",
        "250: CreateModeless",
        "250: SetSmallIcon none",
        "250: SetTitle 'Selected Parts'",
        "250: SetText 247 'Remove'",
        "250: SetText 259 'Change Qty.'",
        "250: InsertColumn 233 0 'Part Name' 130",
        "250: InsertColumn 233 1 'Path' 150",
        "250: InsertColumn 233 2 'Quantity' 55",
        "250: SetFullRowSelect 233",
    };
    EXPECT_EQ(recorder_.Take(), expected);
    EXPECT_FALSE(window_->visible);
    EXPECT_EQ(window_->owner, owner_.get());
}

TEST_F(SelectedParts, ListsInOrderOfAdding)
{
    Add({Part(u"Z"), Part(u"A", u""), Part(u"M", u"x", u"007")});
    EXPECT_EQ(Parts(), (std::vector<std::u16string>{u"Z|SRV1\\Plates\\Thin|1", u"A|SRV1\\|1", u"M|SRV1\\x|007"}));
}

TEST_F(SelectedParts, RemoveTakesTheSelectedRowsAndNoOthers)
{
    const struct {
        const char* label;
        std::set<int> selected;
        std::vector<std::u16string> left;
    } rows[] = {
        {"none", {}, {u"A", u"B", u"C", u"D"}},
        {"second and fourth", {1, 3}, {u"A", u"C"}},
        {"neighbours", {0, 1, 2}, {u"D"}},
        {"last", {3}, {u"A", u"B", u"C"}},
        {"all", {0, 1, 2, 3}, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        dialog_.selectedParts.clear();
        window_->controls.at(RES_PART_LIST).rows.clear();
        Add({Part(u"A"), Part(u"B"), Part(u"C"), Part(u"D")});
        window_->SelectRows(RES_PART_LIST, row.selected);
        window_->PressButton(RES_REMOVE);
        EXPECT_EQ(Names(), row.left);
    }
}

TEST_F(SelectedParts, AddsBehindWhatIsLeftAfterARemove)
{
    Add({Part(u"A"), Part(u"B")});
    window_->SelectRows(RES_PART_LIST, {0});
    window_->PressButton(RES_REMOVE);
    Add({Part(u"A")});
    EXPECT_EQ(Names(), (std::vector<std::u16string>{u"B", u"A"}));
}

TEST_F(SelectedParts, ChangeQtyGivesAllSelectedRowsTheSameText)
{
    Add({Part(u"A"), Part(u"A", u"Other"), Part(u"B"), Part(u"C")});
    window_->SelectRows(RES_PART_LIST, {0, 2, 3});
    windows_.Play(RES_QUANTITY_KEYPAD, {[this](CScriptedWindow& keypad) {
                                            EXPECT_EQ(keypad.Text(RES_QUANTITY), u"");
                                            EXPECT_FALSE(windows_.Find(RES_SELECTION_DIALOG)->inputEnabled);
                                        },
                                        user::Type(RES_QUANTITY, u"025"), user::Press(RES_OK)});
    window_->PressButton(RES_CHANGE_QUANTITY);
    EXPECT_EQ(Parts(), (std::vector<std::u16string>{u"A|SRV1\\Plates\\Thin|025", u"A|SRV1\\Other|1",
                                                    u"B|SRV1\\Plates\\Thin|025", u"C|SRV1\\Plates\\Thin|025"}));
    EXPECT_TRUE(windows_.Find(RES_SELECTION_DIALOG)->inputEnabled);
}

TEST_F(SelectedParts, ChangeQtyCancelledChangesNothing)
{
    Add({Part(u"A", u"x", u"3")});
    window_->PressButton(RES_CHANGE_QUANTITY); // nothing selected: no keypad opens
    window_->SelectRows(RES_PART_LIST, {0});
    windows_.Play(RES_QUANTITY_KEYPAD, {user::Press(RES_DIGIT_5), user::Press(RES_CANCEL)});
    window_->PressButton(RES_CHANGE_QUANTITY);
    EXPECT_EQ(Parts(), std::vector<std::u16string>{u"A|SRV1\\x|3"});
    EXPECT_TRUE(windows_.Find(RES_SELECTION_DIALOG)->inputEnabled);
}

TEST_F(SelectedParts, EveryWayToCloseItOnlyHidesIt)
{
    const struct {
        const char* label;
        UserAction close;
    } rows[] = {
        {"close box", user::CloseBox()},
        {"Escape", user::Key(key_escape)},
        {"Enter",
         [](CScriptedWindow& window) {
             window.focused = RES_PART_LIST;
             window.PressKey({key_return});
         }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.label);
        Add({Part(u"A")});
        const auto before = Parts();
        row.close(*window_);
        EXPECT_FALSE(window_->visible);
        EXPECT_TRUE(dialog_.WindowExists());
        EXPECT_EQ(Parts(), before);
    }
}

TEST_F(SelectedParts, EmptyAndDestroyMayBeRepeated)
{
    Add({Part(u"A")});
    recorder_.lines.clear();
    dialog_.EmptyAndDestroy();
    dialog_.EmptyAndDestroy();
    EXPECT_EQ(recorder_.Take(), std::vector<std::string>{"250: Destroy"});
    EXPECT_FALSE(dialog_.WindowExists());
    EXPECT_TRUE(dialog_.selectedParts.empty());
}

TEST_F(SelectedParts, WithoutAWindowTheListStillCollects)
{
    windows_.canMakeWindows = false;
    CSelectedPartsDlg windowless(windows_, nullptr);
    EXPECT_FALSE(windowless.Create(*owner_));
    windowless.selectedParts.push_back(Part(u"A"));
    windowless.AddLastPartRow();
    windowless.Show();
    EXPECT_EQ(windowless.selectedParts.size(), 1U);
    windowless.EmptyAndDestroy();
}

} // namespace
} // namespace partkeep
