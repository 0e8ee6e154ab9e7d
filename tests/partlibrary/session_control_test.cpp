// The contract, operation by operation, as the component's own class calls it.
#include "controls/kpd_key_manager.h"
#include "partlibrary/session/session_control.h"
#include "platform/text.h"
#include "tests/partlibrary/library_fixture.h"

#include <array>
#include <cstring>
#include <tuple>

namespace partkeep {
namespace {

class SessionControl : public LibraryShop {
protected:
    SessionControl()
    {
        auto control = CPartBrowserControls(libraries_.Places()).CreateHidden(part_browser_class_id, 1, 1, 1);
        inner_ = &dynamic_cast<CSessionControl&>(*control).Session();
        control_ = control.get();
        browser_.Attach(std::move(control));
    }

    void Enter(std::u16string_view folder)
    {
        ASSERT_TRUE(browser_.ConnectServer(u"SRV1"));
        ASSERT_TRUE(browser_.SetCurrentFolder(folder));
    }

    // The name of a selected part; "#" where the answer is 0.
    std::string SelectedName(std::int16_t index)
    {
        std::array<std::array<char, long_text_bytes>, 3> texts{};
        texts[2].fill('x');
        const bool told = browser_.GetSelectedPart(index, texts[0].data(), texts[1].data(), texts[2].data()) == 1;
        EXPECT_EQ(WidenText(texts[0].data()), told ? browser_.GetCurrentServer() : u"");
        EXPECT_EQ(WidenText(texts[1].data()), told ? browser_.GetCurrentFolder() : u"");
        return told ? texts[2].data() : "#";
    }

    // What ReadPartImage leaves in a block that asks for `tag`; empty for the answer 0.
    QByteArray ReadImage(const char* tag)
    {
        QByteArray block(image_block_bytes, '\0');
        QByteArray scratch(scratch_block_bytes, '\0');
        block.replace(0, static_cast<qsizetype>(std::strlen(tag)), tag);
        return browser_.ReadPartImage(u"", block.data(), scratch.data()) ? block : QByteArray();
    }

    CKPDKeyManager browser_;
    IHostedControl* control_ = nullptr;
    CBrowserSession* inner_ = nullptr; // behind the control
};

TEST_F(SessionControl, RefusesCallsThatAreNotInTheTable)
{
    const ControlArgument text{ControlType::Text, std::u16string_view(u"SRV1")};
    const ControlArgument number{ControlType::Int16, std::int16_t{1}};
    const ControlArgument wrong{ControlType::Text, std::int16_t{1}};
    const std::tuple<std::int32_t, std::vector<ControlArgument>, ControlType> rows[] = {
        {1, {}, ControlType::None},       {2, {}, ControlType::Bool},      {2, {text, text}, ControlType::Bool},
        {2, {number}, ControlType::Bool}, {2, {wrong}, ControlType::Bool}, {2, {text}, ControlType::Int32}};
    for (const auto& [id, arguments, result] : rows) {
        EXPECT_EQ(control_->Invoke(id, InvokeKind::Method, arguments, result), ControlResult()) << id;
    }
    EXPECT_EQ(control_->Invoke(15, InvokeKind::PropertyGet, {}, ControlType::Text), ControlResult());
    const ControlArgument null{ControlType::UnknownRef, static_cast<void*>(nullptr)};
    EXPECT_EQ(control_->Invoke(38, InvokeKind::Method, {&null, 1}, ControlType::Bool), ControlResult(std::int16_t{0}));
    Enter(u"Plates\\2008");
    browser_.SelectAllParts(1);
    EXPECT_TRUE(browser_.GetSelectedPart(0, nullptr, nullptr, nullptr)) << "null is no room, and no fault";
    browser_.SetViewState(nullptr);
    EXPECT_FALSE(browser_.GetViewState(nullptr) || browser_.ReadPartImage(u"", nullptr, nullptr));
    EXPECT_EQ(CPartBrowserControls(libraries_.Places()).CreateHidden(ClassId{}, 1, 1, 1), nullptr);
}

TEST_F(SessionControl, EveryOperationAnswersBeforeAServerIsThere)
{
    PartAttributeBlocks blocks(u"P1");
    for (const char16_t* server : {u"", u"none", u"..\\SRV1"}) {
        EXPECT_FALSE(browser_.ConnectServer(server)) << NarrowText(server);
        EXPECT_FALSE(browser_.ReadPartAttributes(server, u"Plates\\2008\\P1", blocks)) << NarrowText(server);
    }
    EXPECT_FALSE(browser_.RefreshPartList() || browser_.SetPartFilter(24));
    EXPECT_FALSE(browser_.CopyPartFiles(u"SRV1", u"Plates\\2008\\P1")) << "no target folder";
    EXPECT_EQ(browser_.GetPreviewFileTitle() + browser_.GetCurrentServer() + browser_.GetCurrentFolder(), u"");
    EXPECT_EQ(browser_.GetSelectedPartCount() + browser_.SelectAllParts(1) + browser_.MoveFocus(1), 0);
    EXPECT_EQ(SelectedName(0), "#");
    EXPECT_EQ(ReadImage("2D"), QByteArray());
    EXPECT_EQ(browser_.GetLastStatus(), 0);
    browser_.DisconnectServer();
}

TEST_F(SessionControl, AStartUpComesBackToServerAndFolder)
{
    ServerTable table;
    table.slots[0] = {"板金"};
    table.slots[1] = {"SRV1"};
    EXPECT_FALSE(browser_.SetCurrentFolder(u"Plates\\2008"));
    EXPECT_TRUE(browser_.SetServerList(table));
    EXPECT_TRUE(browser_.ConnectServer(u"SRV1"));
    browser_.SetCurrentServer(u"SRV1");
    EXPECT_EQ(browser_.GetCurrentFolder(), u"Plates\\2008") << "kept until the server was there";
    browser_.SelectNextServer();
    EXPECT_EQ(inner_->ServerCursor(), 1);
    EXPECT_TRUE(browser_.SetCurrentFolder(u"\\Plates\\"));
    EXPECT_FALSE(browser_.SetCurrentFolder(u"Plates\\1999"));
    EXPECT_EQ(browser_.GetCurrentServer() + browser_.GetCurrentFolder(), u"SRV1Plates");
    ServerTable back;
    EXPECT_TRUE(browser_.GetServerList(back));
    EXPECT_EQ(back, table);
}

TEST_F(SessionControl, AttributesComeAsStored)
{
    PartAttributeBlocks blocks(u"P1");
    blocks.material.fill('x');
    EXPECT_TRUE(browser_.ReadPartAttributes(u"SRV1", u"Plates\\2008\\P1", blocks));
    EXPECT_EQ(blocks.thickness, 15000);
    EXPECT_EQ((Names{blocks.material.data(), blocks.machine.data(), blocks.comment.data()}),
              (Names{"SPCC", "タレット", "取付板"}));
    EXPECT_TRUE(browser_.ReadPartAttributes(u"SRV1", u"Plates\\2008\\P10", blocks));
    for (const char16_t* path : {u"Plates\\2008\\none", u"Plates\\P1", u"", u"\\", u"P1"}) {
        EXPECT_FALSE(browser_.ReadPartAttributes(u"SRV1", path, blocks)) << NarrowText(path);
        EXPECT_EQ(blocks.thickness, -1) << NarrowText(path);
    }
}

TEST_F(SessionControl, WhatTheCodePageCannotHoldIsNotGivenOut)
{
    const std::u16string name(33, u'钣'); // 99 bytes
    libraries_.Fill(u"SRV1"_s, [&](ILibraryWriter& writer) {
        PutTestPart(writer, u"Long"_s, FromWide(name), 1, {0, {}, {}, QString(85, u'长')});
    });
    Enter(u"Long");
    browser_.SelectAllParts(1);
    PartAttributeBlocks blocks(u"");
    EXPECT_TRUE(browser_.ReadPartAttributes(u"SRV1", u"Long\\" + name, blocks));
    EXPECT_EQ(blocks.comment.back(), '\0');
    SetSystemCodePage(shift_jis_code_page);
    EXPECT_EQ(SelectedName(0), "#");
    EXPECT_FALSE(browser_.ReadPartAttributes(u"SRV1", u"Long\\" + name, blocks));
    SetSystemCodePage(utf8_code_page);
}

TEST_F(SessionControl, KindsArriveByMask)
{
    const std::tuple<std::int16_t, const char16_t*, Names> rows[] = {
        {24, u"P1", {"P1.bmf", "P1.iga"}},
        {20, u"P1", {"P1.SY5"}},
        {10, u"P1", {"P1.NCD"}},
        {15, u"P1", {"P1.NCD", "P1.SY5"}},
        {-1, u"P1", {"P1.NCD", "P1.SY5", "P1.bmf", "P1.iga"}},
        {20, u"P2", {}},
    };
    EXPECT_TRUE(browser_.SetTargetFolder(target_.Core(u""))); // with a separator
    for (const auto& [mask, part, files] : rows) {
        EXPECT_TRUE(browser_.SetDataKind(mask));
        EXPECT_TRUE(browser_.CopyPartFiles(u"SRV1", std::u16string(u"Plates\\2008\\") + part)) << mask;
        EXPECT_EQ(Take(), files) << mask << NarrowText(part);
    }
    EXPECT_FALSE(browser_.CopyPartFiles(u"SRV1", u"Plates\\2008\\none"));
    EXPECT_FALSE(browser_.CopyPartFiles(u"none", u"Plates\\2008\\P1"));
    EXPECT_TRUE(browser_.CopyPartFiles(u"板金", u"筐体\\カバー1")) << "another server than the current one";
}

TEST_F(SessionControl, OnlyWhatIsShownStaysSelectedInTheOrderShown)
{
    Enter(u"Plates\\2008");
    const QStringList some{u"P10"_s, u"P2"_s, u"P1"_s};
    std::string clicks;
    browser_.SetEventSink([&clicks](std::int32_t id) { clicks += std::to_string(id); });
    const std::tuple<const char*, std::function<void()>, Names, bool> rows[] = {
        {"select", [&] { inner_->SelectParts(some); }, {"P1", "P2", "P10"}, true},
        {"order", [&] { inner_->SortBy(PartColumn::Name, true); }, {"P10", "P2", "P1"}, false},
        {"filter", [&] { browser_.SetPartFilter(10); }, {"P10", "P1"}, false},
        {"refresh", [&] { browser_.RefreshPartList(); }, {"P10", "P1"}, false},
        {"search", [&] { inner_->SearchFor(u"p1 タレット"_s); }, {"P1"}, true},
        {"search cleared", [&] { inner_->SearchFor({}); }, {"P1"}, false},
        {"no filter", [&] { browser_.SetPartFilter(-1); }, {"P1"}, false},
        {"all", [&] { browser_.SelectAllParts(1); }, {"P10", "P2", "p1", "P1", "Bare"}, false},
        {"not here", [&] { inner_->SelectParts({u"Top"_s}); }, {"P10", "P2", "p1", "P1", "Bare"}, false},
        {"here", [&] { inner_->Go(u"SRV1"_s, u"Plates\\2008"_s); }, {"P10", "P2", "p1", "P1", "Bare"}, true},
        {"none", [&] { browser_.SelectAllParts(0); }, {}, false},
        {"by the user", [&] { inner_->Select({1}); }, {""}, true}, // a part of another folder
        {"folder", [&] { browser_.SetCurrentFolder(u"Plates"); }, {}, false},
        {"user's folder", [&] { inner_->Go(u"SRV1"_s, u"Plates\\2008"_s); }, {}, true},
        {"user's server", [&] { inner_->Go(u"板金"_s, {}); }, {}, true},
    };
    for (const auto& [label, act, selected, clicked] : rows) {
        clicks.clear();
        act();
        Names names;
        for (std::int16_t i = 0; i < browser_.GetSelectedPartCount(); ++i) {
            names.push_back(SelectedName(i));
        }
        EXPECT_EQ(names, selected) << label;
        EXPECT_EQ(clicks, clicked ? "-600" : "") << label;
    }
}

TEST_F(SessionControl, ServersJoinTheTableWhileThereIsRoomAndOutliveTheirLibrary)
{
    inner_->SetServerList(ServerTable{});
    EXPECT_EQ(inner_->Servers(), (QStringList{u"SRV1"_s, u"板金"_s})) << "found in the folder";
    ServerTable table;
    table.slots[0] = {"SRV1"};
    inner_->SetServerList(table);
    EXPECT_EQ(inner_->OtherServers(), QStringList(u"板金"_s));
    EXPECT_TRUE(inner_->Go(u"板金"_s, {}));
    EXPECT_EQ(inner_->Servers().size() * 10 + inner_->ServerCursor(), 21);
    table.slots.fill({"full"});
    inner_->SetServerList(table);
    EXPECT_TRUE(inner_->Go(u"板金"_s, {}));
    EXPECT_EQ(inner_->Servers().size(), 10);
    browser_.SetCurrentServer(u"gone");
    EXPECT_EQ(browser_.GetCurrentServer(), u"gone");
    EXPECT_EQ(inner_->Problem().fault, LibraryFault::NotFound);
    EXPECT_FALSE(browser_.SetCurrentFolder(u"New"));
    libraries_.Fill(u"gone"_s, [](ILibraryWriter& writer) { PutTestPart(writer, u"New"_s, u"N"_s, 1); });
    EXPECT_TRUE(browser_.RefreshPartList());
    EXPECT_EQ(browser_.GetCurrentFolder(), u"New");
}

TEST_F(SessionControl, PicturesComeByTag)
{
    Enter(u"Plates\\2008");
    ASSERT_TRUE(inner_->SelectParts({u"P1"_s, u"P2"_s})); // the first one is meant
    EXPECT_TRUE(ReadImage("2D").startsWith(SmallBitmap()));
    EXPECT_TRUE(ReadImage("3D").endsWith(QByteArray(image_block_bytes - 400, '\0')));
    EXPECT_FALSE(ReadImage("PNG").isEmpty());
    EXPECT_TRUE(ReadImage("2DX").isEmpty() && ReadImage("").isEmpty() && ReadImage("png").isEmpty());
    EXPECT_EQ(browser_.GetLastStatus(), 0);
    browser_.SetTargetFolder(target_.Core());
    browser_.SetDataKind(20);
    EXPECT_EQ(browser_.GetPreviewFileTitle(), u"P1");
    EXPECT_EQ(ReadBytes(target_.Path("P1.PNG")), SmallPng().toStdString());
    ASSERT_TRUE(inner_->SelectParts({u"P2"_s}));
    EXPECT_TRUE(ReadImage("2D").isEmpty() && ReadImage("PNG").isEmpty());
    EXPECT_EQ(browser_.GetPreviewFileTitle(), u"");
}

TEST_F(SessionControl, ALargePictureIsNotForTheList)
{
    if (InDatabase()) {
        GTEST_SKIP() << "pictures of a database come later, and far_library_test has them";
    }
    Enter(u"Plates\\2008");
    const auto picture = [this](qsizetype bytes) {
        libraries_.Put(u"Plates\\2008"_s, u"P1"_s, {{FileSlot::Png, SmallPng().leftJustified(bytes, 'x')}});
        IPartLibrary& library = *inner_->Library();
        return *library.PictureAtHand(library.FindPart(u"Plates\\2008"_s, u"P1"_s)->id, FileSlot::Png);
    };
    EXPECT_EQ(picture(largest_list_picture).size(), largest_list_picture);
    EXPECT_EQ(picture(largest_list_picture + 1).size(), 0);
}

TEST_F(SessionControl, ADeletedPartHasNoNameAndOutdatesTheList)
{
    Enter(u"Plates\\2008");
    ASSERT_TRUE(inner_->SelectParts({u"P1"_s, u"P2"_s}));
    libraries_.Fill(u"SRV1"_s,
                    [](ILibraryWriter& writer) { ASSERT_TRUE(writer.RemovePart(u"Plates\\2008"_s, u"P1"_s)); });
    EXPECT_EQ(SelectedName(0), "");
    EXPECT_EQ(SelectedName(1), "P2");
    EXPECT_TRUE(ReadImage("2D").isEmpty());
    EXPECT_EQ(browser_.GetLastStatus(), status_list_outdated);
    for (const LibraryFault told : {LibraryFault::NoPart, LibraryFault::None}) {
        EXPECT_TRUE(browser_.RefreshPartList());
        EXPECT_EQ(browser_.GetSelectedPartCount(), 1);
        EXPECT_EQ(inner_->Problem().fault, told);
    }
    EXPECT_EQ(SelectedName(-1) + SelectedName(1), "##");
    for (const auto& moved : {std::pair{u"Plates"_s, u"A\\B"_s}, {u"A\\B\\2008"_s, u"2009"_s}}) {
        const auto move = [&](ILibraryWriter& writer) { ASSERT_TRUE(writer.MoveFolder(moved.first, moved.second)); };
        libraries_.Fill(u"SRV1"_s, move);
        EXPECT_TRUE(browser_.RefreshPartList());
        EXPECT_EQ(inner_->Problem().fault, LibraryFault::None);
        EXPECT_EQ(SelectedName(0), "P2") << "in a folder that has another path now";
    }
    EXPECT_EQ(browser_.GetCurrentFolder(), u"2009");
}

} // namespace
} // namespace partkeep
