// The contract, operation by operation, as the component's own class calls it.
#include "controls/kpd_key_manager.h"
#include "partlibrary/session_control.h"
#include "platform/text.h"
#include "tests/partlibrary/library_fixture.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace partkeep {
namespace {

class SessionControl : public testing::Test {
protected:
    void SetUp() override
    {
        libraries_.MakeShop();
        CPartBrowserControls controls{CLibraryFolder(libraries_.Folder())};
        auto control = controls.CreateHidden(part_browser_class_id, 215, 100, 100);
        ASSERT_NE(control, nullptr);
        session_ = &dynamic_cast<CSessionControl&>(*control).Session();
        control_ = control.get();
        browser_.Attach(std::move(control));
    }

    void Enter()
    {
        ASSERT_TRUE(browser_.ConnectServer(u"SRV1"));
        ASSERT_TRUE(browser_.SetCurrentFolder(u"Plates\\2008"));
    }

    // What ReadPartImage leaves in a block that asks for `tag`; empty for the answer 0.
    QByteArray ReadImage(const char* tag)
    {
        std::vector<char> block(image_block_bytes);
        std::vector<char> scratch(scratch_block_bytes);
        std::memcpy(block.data(), tag, std::strlen(tag));
        const bool answer = browser_.ReadPartImage(u"", block.data(), scratch.data());
        return answer ? QByteArray(block.data(), static_cast<qsizetype>(block.size())) : QByteArray();
    }

    CTestLibraries libraries_;
    CTemporaryFolder target_;
    CKPDKeyManager browser_;
    IHostedControl* control_ = nullptr;
    CBrowserSession* session_ = nullptr;
};

using Names = std::vector<std::string>;

TEST_F(SessionControl, OnlyThePartBrowserIsMade)
{
    CPartBrowserControls controls{CLibraryFolder(libraries_.Folder())};
    EXPECT_EQ(controls.CreateHidden({}, 1, 1, 1), nullptr);
}

TEST_F(SessionControl, RefusesCallsThatAreNotInTheTable)
{
    const ControlArgument text{ControlType::Text, std::u16string_view(u"SRV1")};
    const ControlArgument number{ControlType::Int16, std::int16_t{1}};
    const struct {
        const char* label;
        std::int32_t id;
        InvokeKind kind;
        std::vector<ControlArgument> arguments;
        ControlType result;
    } rows[] = {
        {"unknown id", 1, InvokeKind::Method, {}, ControlType::None},
        {"property", 15, InvokeKind::PropertyGet, {}, ControlType::Text},
        {"too few", 2, InvokeKind::Method, {}, ControlType::Bool},
        {"too many", 2, InvokeKind::Method, {text, text}, ControlType::Bool},
        {"wrong type", 2, InvokeKind::Method, {number}, ControlType::Bool},
        {"wrong value", 2, InvokeKind::Method, {{ControlType::Text, std::int16_t{1}}}, ControlType::Bool},
        {"wrong result", 2, InvokeKind::Method, {text}, ControlType::Int32},
    };
    for (const auto& row : rows) {
        const ControlResult result = control_->Invoke(row.id, row.kind, row.arguments, row.result);
        EXPECT_TRUE(std::holds_alternative<std::monostate>(result)) << row.label;
    }
    const ControlArgument no_table{ControlType::UnknownRef, static_cast<void*>(nullptr)};
    EXPECT_EQ(control_->Invoke(38, InvokeKind::Method, {&no_table, 1}, ControlType::Bool),
              ControlResult(std::int16_t{0}));
}

TEST_F(SessionControl, EveryOperationAnswersBeforeAServerIsThere)
{
    std::array<char, short_text_bytes> server{};
    std::array<char, short_text_bytes> folder{};
    std::array<char, short_text_bytes> name{};
    PartAttributeBlocks blocks(u"P1");
    EXPECT_FALSE(browser_.ConnectServer(u""));
    EXPECT_FALSE(browser_.ConnectServer(u"none"));
    EXPECT_FALSE(browser_.ConnectServer(u"..\\SRV1"));
    EXPECT_FALSE(browser_.SetCurrentFolder(u"Plates"));
    EXPECT_FALSE(browser_.RefreshPartList());
    EXPECT_FALSE(browser_.SetPartFilter(24));
    EXPECT_FALSE(browser_.ReadPartAttributes(u"none", u"Plates\\P1", blocks));
    EXPECT_FALSE(browser_.CopyPartFiles(u"SRV1", u"Plates\\2008\\P1")); // no target folder
    EXPECT_EQ(browser_.GetPreviewFileTitle(), u"");
    EXPECT_EQ(browser_.GetSelectedPartCount(), 0);
    EXPECT_EQ(browser_.GetSelectedPart(0, server.data(), folder.data(), name.data()), 0);
    EXPECT_EQ(browser_.SelectAllParts(1), 0);
    EXPECT_EQ(browser_.GetCurrentServer(), u"");
    EXPECT_EQ(browser_.GetCurrentFolder(), u"");
    EXPECT_EQ(browser_.GetLastStatus(), 0);
    EXPECT_EQ(browser_.MoveFocus(1), 0);
    EXPECT_TRUE(ReadImage("2D").isEmpty());
    browser_.DisconnectServer();
}

TEST_F(SessionControl, AStartUpComesBackToServerAndFolder)
{
    ServerTable table;
    table.slots[0] = {"板金"};
    table.slots[1] = {"SRV1"};
    EXPECT_FALSE(browser_.SetCurrentFolder(u"Plates\\2008"));
    browser_.SetDisplayUnit(1);
    browser_.RefreshPartList();
    browser_.SetPartFilter(24);
    EXPECT_TRUE(browser_.SetServerList(table));
    std::vector<std::int16_t> view(max_view_state_values);
    browser_.SetViewState(view.data());
    browser_.MoveFocus(-1);
    EXPECT_TRUE(browser_.ConnectServer(u"SRV1"));
    browser_.SetCurrentServer(u"SRV1");
    browser_.SelectNextServer();
    browser_.OpenFolderSelection();
    EXPECT_TRUE(browser_.SetCurrentFolder(u"Plates\\2008"));
    EXPECT_EQ(session_->ServerCursor(), 1);
    EXPECT_EQ(browser_.GetCurrentServer(), u"SRV1");
    EXPECT_EQ(browser_.GetCurrentFolder(), u"Plates\\2008");
    EXPECT_FALSE(browser_.SetCurrentFolder(u"Plates\\1999"));
    EXPECT_EQ(browser_.GetCurrentFolder(), u"Plates\\2008");
    ServerTable back;
    EXPECT_TRUE(browser_.GetServerList(back));
    EXPECT_EQ(back, table);
}

TEST_F(SessionControl, AnEmptyTableIsFilledFromTheFolder)
{
    EXPECT_TRUE(browser_.SetServerList(ServerTable{}));
    ServerTable back;
    EXPECT_TRUE(browser_.GetServerList(back));
    EXPECT_STREQ(back.slots[0].data(), "SRV1");
    EXPECT_STREQ(back.slots[1].data(), "板金");
    EXPECT_EQ(back.slots[2][0], '\0');
}

TEST_F(SessionControl, AttributesComeAsStored)
{
    PartAttributeBlocks blocks(u"P1");
    blocks.material.fill('x');
    EXPECT_TRUE(browser_.ReadPartAttributes(u"SRV1", u"Plates\\2008\\P1", blocks));
    EXPECT_EQ(blocks.thickness, 15000);
    EXPECT_STREQ(blocks.material.data(), "SPCC");
    EXPECT_STREQ(blocks.machine.data(), "タレット");
    EXPECT_STREQ(blocks.comment.data(), "取付板");
    EXPECT_TRUE(browser_.ReadPartAttributes(u"SRV1", u"Plates\\2008\\P10", blocks));
    EXPECT_EQ(blocks.thickness, -1);
    for (const char16_t* path : {u"Plates\\2008\\none", u"Plates\\P1", u"", u"\\", u"P1"}) {
        EXPECT_FALSE(browser_.ReadPartAttributes(u"SRV1", path, blocks)) << NarrowText(path);
        EXPECT_EQ(blocks.thickness, -1) << NarrowText(path);
    }
}

TEST_F(SessionControl, TextsAreCutToTheirBuffers)
{
    const QString name = QString(33, u'板'); // 99 bytes
    const QString comment = QString(85, u'長');
    libraries_.Fill(QStringLiteral("SRV1"), [&](CLibraryWriter& writer) {
        PutTestPart(writer, QStringLiteral("Long"), name, 1, {0, {}, {}, comment});
    });
    SetSystemCodePage(utf7_code_page); // the same texts are longer here
    std::array<char, 2 * short_text_bytes> buffer{};
    buffer.fill('#');
    std::array<char, short_text_bytes> rest{};
    PartAttributeBlocks blocks(u"");
    browser_.ConnectServer(u"SRV1");
    browser_.SetCurrentFolder(u"Long");
    browser_.SelectAllParts(1);
    const std::int32_t selected = browser_.GetSelectedPart(0, rest.data(), rest.data(), buffer.data());
    const bool read = browser_.ReadPartAttributes(u"SRV1", u"Long\\" + name.toStdU16String(), blocks);
    const std::u16string cut = WidenText(buffer.data());
    SetSystemCodePage(utf8_code_page);
    EXPECT_EQ(selected, 1);
    EXPECT_TRUE(read);
    EXPECT_EQ(buffer[short_text_bytes - 1], '\0');
    EXPECT_EQ(buffer[short_text_bytes], '#');
    EXPECT_TRUE(!cut.empty() && name.toStdU16String().starts_with(cut));
    EXPECT_EQ(blocks.comment.back(), '\0');
}

TEST_F(SessionControl, KindsArriveByMask)
{
    Enter();
    const struct {
        std::int16_t mask;
        const char16_t* part;
        Names files;
    } rows[] = {
        {24, u"P1", {"P1.bmf", "P1.iga"}},
        {20, u"P1", {"P1.SY5"}},
        {10, u"P1", {"P1.NCD"}},
        {15, u"P1", {"P1.NCD", "P1.SY5"}},
        {-1, u"P1", {"P1.NCD", "P1.SY5", "P1.bmf", "P1.iga"}},
        {24, u"P2", {"P2.bmf"}},
        {20, u"P2", {}},
        {24, u"Bare", {}},
    };
    EXPECT_TRUE(browser_.SetTargetFolder(target_.Core(u""))); // with a separator
    for (const auto& row : rows) {
        EXPECT_TRUE(browser_.SetDataKind(row.mask));
        EXPECT_TRUE(browser_.CopyPartFiles(u"SRV1", std::u16string(u"Plates\\2008\\") + row.part)) << row.mask;
        EXPECT_EQ(NamesIn(target_.Path()), row.files) << row.mask << NarrowText(row.part);
        for (const std::string& name : row.files) {
            EXPECT_EQ(ReadBytes(target_.Path(name)), name);
            std::filesystem::remove(target_.Path(name));
        }
    }
    EXPECT_FALSE(browser_.CopyPartFiles(u"SRV1", u"Plates\\2008\\none"));
    EXPECT_FALSE(browser_.CopyPartFiles(u"none", u"Plates\\2008\\P1"));
    EXPECT_TRUE(browser_.CopyPartFiles(u"板金", u"筐体\\カバー1")); // another server than the current one
}

TEST_F(SessionControl, PicturesComeByTag)
{
    Enter();
    ASSERT_TRUE(session_->SelectParts({QStringLiteral("P1")}));
    EXPECT_TRUE(ReadImage("2D").startsWith(SmallBitmap()));
    EXPECT_TRUE(ReadImage("3D").endsWith(QByteArray(image_block_bytes - 400, '\0')));
    EXPECT_FALSE(ReadImage("PNG").isEmpty());
    EXPECT_TRUE(ReadImage("4D").isEmpty());
    EXPECT_TRUE(ReadImage("").isEmpty());
    EXPECT_EQ(browser_.GetLastStatus(), 0);
    browser_.SetTargetFolder(target_.Core());
    browser_.SetDataKind(20);
    EXPECT_EQ(browser_.GetPreviewFileTitle(), u"P1");
    EXPECT_EQ(ReadBytes(target_.Path("P1.PNG")), SmallPng().toStdString());
    ASSERT_TRUE(session_->SelectParts({QStringLiteral("P2")}));
    EXPECT_TRUE(ReadImage("2D").isEmpty());
    EXPECT_TRUE(ReadImage("PNG").isEmpty());
    EXPECT_EQ(browser_.GetPreviewFileTitle(), u"");
}

TEST_F(SessionControl, ADeletedPartHasNoNameAndOutdatesTheList)
{
    Enter();
    ASSERT_TRUE(session_->SelectParts({QStringLiteral("P1"), QStringLiteral("P2")}));
    libraries_.Fill(QStringLiteral("SRV1"), [](CLibraryWriter& writer) {
        ASSERT_TRUE(writer.RemovePart(*writer.MakeFolder(QStringLiteral("Plates\\2008")), QStringLiteral("P1")));
    });
    std::array<char, short_text_bytes> text{};
    std::array<char, short_text_bytes> name{};
    name.fill('#');
    EXPECT_EQ(browser_.GetSelectedPart(0, text.data(), text.data(), name.data()), 1);
    EXPECT_STREQ(name.data(), "");
    EXPECT_EQ(browser_.GetSelectedPart(1, text.data(), text.data(), name.data()), 1);
    EXPECT_STREQ(name.data(), "P2");
    EXPECT_TRUE(ReadImage("2D").isEmpty());
    EXPECT_EQ(browser_.GetLastStatus(), status_list_outdated);
    EXPECT_TRUE(browser_.RefreshPartList());
    EXPECT_EQ(browser_.GetSelectedPartCount(), 1);
    EXPECT_EQ(browser_.GetSelectedPart(-1, text.data(), text.data(), name.data()), 0);
    EXPECT_EQ(browser_.GetSelectedPart(1, text.data(), text.data(), name.data()), 0);
}

TEST_F(SessionControl, LargeSelectionsKeepTheirOrder)
{
    libraries_.Fill(QStringLiteral("SRV1"), [](CLibraryWriter& writer) {
        for (int i = 300; i > 0; --i) {
            PutTestPart(writer, QStringLiteral("Many"), QStringLiteral("N%1").arg(i), 0);
        }
    });
    browser_.ConnectServer(u"SRV1");
    browser_.SetCurrentFolder(u"Many");
    EXPECT_EQ(browser_.SelectAllParts(1), 1);
    EXPECT_EQ(browser_.GetSelectedPartCount(), 300);
    std::array<char, short_text_bytes> text{};
    std::array<char, long_text_bytes> name{};
    EXPECT_EQ(browser_.GetSelectedPart(256, text.data(), text.data(), name.data()), 1);
    EXPECT_STREQ(name.data(), "N257");
    browser_.SelectAllParts(0);
    EXPECT_EQ(browser_.GetSelectedPartCount(), 0);
}

TEST_F(SessionControl, ClicksReachTheSink)
{
    Enter();
    std::vector<std::int32_t> events;
    browser_.SetEventSink([&events](std::int32_t id) { events.push_back(id); });
    session_->Select({});
    browser_.SelectAllParts(1);
    browser_.SetEventSink({});
    session_->Select({});
    EXPECT_EQ(events, std::vector<std::int32_t>{-600});
}

} // namespace
} // namespace partkeep
