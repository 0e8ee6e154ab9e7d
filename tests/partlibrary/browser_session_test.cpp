// The session as a pane sees it: what the user does, what the pane hears, what stays selected.
#include "partlibrary/browser_session.h"
#include "tests/partlibrary/library_fixture.h"

#include <gtest/gtest.h>

namespace partkeep {
namespace {

class CRecordingPane : public IBrowserPane {
public:
    void ServersChanged() override { log += "servers "; }
    void FolderChanged() override { log += "folder "; }
    void PartListChanged() override { log += "list "; }
    void SelectionChanged() override { log += "selection "; }
    void ProblemChanged() override {}
    void OpenFolderSelection() override { log += "tree "; }
    std::int16_t MoveFocus(std::int16_t code) override { return static_cast<std::int16_t>(code + 5); }
    void ApplyViewState(const ViewState& state) override { view = state; }
    void CaptureViewState(ViewState& state) override { state.tree_width = 123; }
    void CopyStarted(const QString& part) override { log += "copy-" + part.toStdString() + " "; }
    void CopyEnded() override { log += "done "; }

    std::string Take() { return std::exchange(log, {}); }

    std::string log;
    ViewState view;
};

class BrowserSession : public testing::Test {
protected:
    void SetUp() override
    {
        libraries_.MakeShop();
        session_.AttachPane(&pane_);
        session_.SetClickSink([this] { pane_.log += "click "; });
    }

    std::vector<std::string> Selected()
    {
        std::vector<std::string> names;
        for (std::int16_t i = 0; i < session_.GetSelectedPartCount(); ++i) {
            names.push_back(session_.GetSelectedPart(i)->name.toStdString());
        }
        return names;
    }

    void EnterFolder2008()
    {
        ASSERT_TRUE(session_.ConnectServer(u"SRV1"));
        ASSERT_TRUE(session_.SetCurrentFolder(u"Plates\\2008"));
        pane_.Take();
    }

    CTestLibraries libraries_;
    CBrowserSession session_{CLibraryFolder(libraries_.Folder())};
    CRecordingPane pane_;
};

using Names = std::vector<std::string>;

TEST_F(BrowserSession, TheUsersWorkClicksOnceAndTheComponentsNever)
{
    EnterFolder2008();
    const struct {
        const char* label;
        std::function<void()> act;
        const char* heard;
    } rows[] = {
        {"filter", [&] { session_.SetPartFilter(24); }, "list "},
        {"refresh", [&] { session_.RefreshPartList(); }, "list "},
        {"select all", [&] { session_.SelectAllParts(1); }, "selection "},
        {"clear", [&] { session_.SelectAllParts(0); }, "selection "},
        {"restore a folder", [&] { session_.OpenFolderSelection(); }, "tree "},
        {"folder", [&] { session_.SetCurrentFolder(u"Plates"); }, "folder "},
        {"user's folder", [&] { session_.OpenFolder(QStringLiteral("Plates\\2008")); }, "folder click "},
        {"user's selection", [&] { session_.Select({}); }, "click "},
        {"search without a selection", [&] { session_.SearchFor(QStringLiteral("P")); }, "list "},
        {"user's server", [&] { session_.OpenServer(QStringLiteral("板金")); }, "servers folder click "},
        {"user's server that is not there", [&] { session_.OpenServer(QStringLiteral("none")); }, "servers click "},
    };
    for (const auto& row : rows) {
        row.act();
        EXPECT_EQ(pane_.Take(), row.heard) << row.label;
    }
}

TEST_F(BrowserSession, OnlyWhatIsShownStaysSelectedInTheOrderShown)
{
    EnterFolder2008();
    ASSERT_TRUE(session_.SelectParts({QStringLiteral("P10"), QStringLiteral("P2"), QStringLiteral("P1")}));
    EXPECT_EQ(Selected(), (Names{"P1", "P2", "P10"}));
    session_.SortBy(PartColumn::Name, true);
    EXPECT_EQ(Selected(), (Names{"P10", "P2", "P1"}));
    session_.SetPartFilter(10);
    EXPECT_EQ(Selected(), (Names{"P10", "P1"}));
    session_.RefreshPartList();
    EXPECT_EQ(Selected(), (Names{"P10", "P1"}));
    pane_.Take();
    session_.SearchFor(QStringLiteral("p1 タレット"));
    EXPECT_EQ(pane_.Take(), "list selection click ");
    EXPECT_EQ(Selected(), (Names{"P1"}));
    session_.SearchFor({});
    session_.SetPartFilter(-1);
    session_.SelectAllParts(1);
    EXPECT_EQ(Selected(), (Names{"P10", "P2", "p1", "P1", "Bare"}));
    EXPECT_FALSE(session_.SelectParts({QStringLiteral("Top")}));
    EXPECT_EQ(session_.GetSelectedPartCount(), 5);
    session_.SetCurrentFolder(u"Plates");
    EXPECT_EQ(session_.GetSelectedPartCount(), 0);
}

TEST_F(BrowserSession, TheUnitChangesAtTheRefresh)
{
    EnterFolder2008();
    session_.SetDisplayUnit(1);
    EXPECT_EQ(session_.ShownUnit(), DisplayUnit::Metric);
    session_.RefreshPartList();
    EXPECT_EQ(session_.ShownUnit(), DisplayUnit::Inch);
}

TEST_F(BrowserSession, AServersNameOutlivesTheServer)
{
    session_.SetCurrentServer(u"SRV1");
    session_.SetCurrentServer(u"gone");
    EXPECT_EQ(session_.GetCurrentServer(), u"gone");
    EXPECT_EQ(session_.Library(), nullptr);
    EXPECT_EQ(session_.Problem().fault, LibraryFault::NotFound);
    EXPECT_FALSE(session_.SetCurrentFolder(u"New"));
    libraries_.Fill(QStringLiteral("gone"),
                    [](CLibraryWriter& writer) { PutTestPart(writer, QStringLiteral("New"), QStringLiteral("N"), 1); });
    EXPECT_TRUE(session_.RefreshPartList());
    EXPECT_EQ(session_.GetCurrentFolder(), u"New");
}

TEST_F(BrowserSession, OtherServersJoinTheTableWhileThereIsRoom)
{
    ServerTable table;
    table.slots[0] = {"SRV1"};
    session_.SetServerList(table);
    EXPECT_EQ(session_.OtherServers(), QStringList(QStringLiteral("板金")));
    EXPECT_TRUE(session_.OpenServer(QStringLiteral("板金")));
    EXPECT_EQ(session_.Servers().size(), 2);
    EXPECT_EQ(session_.ServerCursor(), 1);
    for (std::size_t i = 0; i < server_slots; ++i) {
        table.slots[i] = {"full"};
    }
    session_.SetServerList(table);
    EXPECT_TRUE(session_.OpenServer(QStringLiteral("板金")));
    EXPECT_EQ(session_.Servers().size(), 10);
    EXPECT_EQ(session_.GetCurrentServer(), u"板金");
}

TEST_F(BrowserSession, TheViewStateGoesThroughThePane)
{
    EnterFolder2008();
    std::array<std::int16_t, view_state_values> values{};
    session_.SetViewState(values); // another browser's
    EXPECT_EQ(pane_.view, ViewState{});
    session_.SortBy(PartColumn::Comment, true);
    EXPECT_TRUE(session_.GetViewState(values));
    CBrowserSession next{CLibraryFolder(libraries_.Folder())};
    next.AttachPane(&pane_);
    next.SetViewState(values);
    EXPECT_EQ(pane_.view.tree_width, 123);
    EXPECT_EQ(next.ListView().sort, PartColumn::Comment);
    EXPECT_TRUE(next.ListView().descending);
    values[2] = -7;
    values[3] = 99;
    next.SetViewState(values);
    EXPECT_EQ(pane_.view.tree_width, 0);
    EXPECT_EQ(pane_.view.sort, PartColumn::Name);
}

TEST_F(BrowserSession, ThePaneHearsOfACopyAndMovesTheFocus)
{
    EnterFolder2008();
    CTemporaryFolder target;
    session_.SetTargetFolder(target.Core());
    session_.CopyPartFiles(u"SRV1", u"Plates\\2008\\P1");
    EXPECT_EQ(pane_.Take(), "copy-P1 done ");
    EXPECT_EQ(session_.MoveFocus(1), 6);
    session_.AttachPane(nullptr);
    EXPECT_EQ(session_.MoveFocus(1), 0);
}

} // namespace
} // namespace partkeep
