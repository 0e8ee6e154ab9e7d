// The pane while its database server hangs: greyed, with a line that says since when, soon done with every action, and
// as before when the server is.
#include "tests/desktop/played_pane.h"

#include <QElapsedTimer>

namespace partkeep {
namespace {

QImage LookOfRow(CPlayedPane& pane, int row)
{
    return pane.List().viewport()->grab(pane.List().visualRect(pane.pane->Model().index(row, 0))).toImage();
}

TEST(PaneOutage, IsShownSinceWhenItLastsHoldsNobodyUpAndEnds)
{
    CTestLibraries libraries;
    libraries.MakeShop();
    CPlayedPane pane(libraries);
    ClickRow(*pane.pane, 1);
    const QImage before = LookOfRow(pane, 3);
    ASSERT_TRUE(SignalDatabase("STOP"));
    const struct {
        const char* label;
        std::function<void()> action;
        qint64 longest;
    } rows[] = {
        {"asked anew", [&] { pane.Key(Qt::Key_F5); }, 2700},
        {"a click", [&] { ClickRow(*pane.pane, 1); }, 700},
        {"the host's refresh", [&] { pane.browser.RefreshPartList(); }, 700},
        {"another folder and back",
         [&] {
             pane.browser.SetCurrentFolder(u"Plates");
             pane.browser.SetCurrentFolder(u"Plates\\2008");
         },
         700},
    };
    for (const auto& row : rows) {
        QElapsedTimer time;
        time.start();
        row.action();
        EXPECT_LT(time.elapsed(), row.longest) << row.label;
        const QString line = QString::fromStdString(pane.ProblemLine());
        EXPECT_TRUE(line.contains(u"SRV1"_s) && line.contains(u"(since "_s)) << row.label << line.toStdString();
        EXPECT_EQ(pane.Shown(), "Bare P1 p1 P2 P10") << row.label;
        EXPECT_NE(LookOfRow(pane, 3), before) << row.label;
        EXPECT_EQ(pane.Selected(), "P1") << row.label;
    }
    ASSERT_TRUE(SignalDatabase("CONT"));
    QTest::mouseClick(ButtonIn(*pane.pane, u"Try again"_s), Qt::LeftButton);
    Settle(*pane.pane);
    EXPECT_EQ(pane.ProblemLine(), "");
    EXPECT_EQ(pane.Shown(), "Bare P1 p1 P2 P10");
    EXPECT_EQ(LookOfRow(pane, 3), before);
    EXPECT_EQ(pane.Selected(), "P1");
}

} // namespace
} // namespace partkeep
