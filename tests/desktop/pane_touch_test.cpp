// The pane under fingers: how large what they hit is, and what taps and flicks do.
#include "tests/desktop/played_pane.h"

#include <QApplication>
#include <QPointingDevice>
#include <QProxyStyle>
#include <QScrollBar>

namespace partkeep {
namespace {

class PaneTouch : public PaneTest {
protected:
    PaneTouch()
    {
        libraries_.Fill(u"SRV1"_s, [](auto& writer) { PutTestParts(writer, u"Long"_s, u"L%1"_s, 0, 60); });
    }

    // A finger that goes from one place to another on its way to being lifted.
    void Touch(QWidget& widget, const QPoint& from, int down = 0)
    {
        QTest::touchEvent(widget.window(), screen_.get()).press(0, from, &widget);
        for (int step = 1; step <= 8 && down != 0; ++step) {
            QTest::qWait(10);
            QTest::touchEvent(widget.window(), screen_.get()).move(0, from + QPoint(0, down * step / 8), &widget);
        }
        QTest::touchEvent(widget.window(), screen_.get()).release(0, from + QPoint(0, down), &widget);
        Settle();
    }

    // Behind the finger that flicks.
    bool RollsOn(CPlayedPane& pane)
    {
        QWidget& rows = *pane.List().viewport();
        Touch(rows, {60, rows.height() - 20}, -100);
        const int lifted = pane.List().verticalScrollBar()->value();
        EXPECT_GT(lifted, 0);
        QTest::qWait(100);
        return pane.List().verticalScrollBar()->value() != lifted;
    }

    std::unique_ptr<QPointingDevice> screen_;
};

TEST_F(PaneTouch, WhatAFingerHitsIsLargeEnough)
{
    for (const bool touch : {false, true}) {
        SCOPED_TRACE(touch);
        screen_.reset(touch ? QTest::createTouchDevice() : nullptr);
        CPlayedPane pane(libraries_);
        pane.Type(u"p"_s);
        QList<QSize> targets{{44, pane.List().RowHeight()}, {44, pane.Header().height()}, pane.Search().size()};
        targets += pane.Tree().visualRect(pane.Tree().currentIndex()).size();
        for (const QToolButton* button : pane.pane->findChildren<QToolButton*>()) {
            targets += button->isVisible() ? button->size() : QSize(44, 44);
        }
        QMenu& places = *ButtonIn(*pane.pane, u"Places"_s)->menu();
        places.popup({});
        targets += places.actionGeometry(places.actions().front()).size();
        places.close();
        for (const QSize& target : targets) {
            EXPECT_GE(std::min(target.width(), target.height()), touch ? 44 : 24);
        }
    }
}

TEST_F(PaneTouch, NothingRollsOnWhereNothingMoves)
{
    struct Still : QProxyStyle {
        int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                      QStyleHintReturn* data) const override
        {
            return hint == SH_Widget_Animation_Duration ? 0 : QProxyStyle::styleHint(hint, option, widget, data);
        }
    };
    const QString usual = QApplication::style()->name();
    QApplication::setStyle(new Still);
    screen_.reset(QTest::createTouchDevice());
    CPlayedPane pane(libraries_, {.folder = u"Long"});
    EXPECT_FALSE(RollsOn(pane));
    QApplication::setStyle(usual);
}

TEST_F(PaneTouch, TapsChooseAndFlicksOnlyScroll)
{
    screen_.reset(QTest::createTouchDevice());
    CPlayedPane pane(libraries_, {.folder = u"Long"});
    QWidget& rows = *pane.List().viewport();
    pane.TakeClicks();
    Touch(rows, PlaceOfRow(*pane.pane, 1));
    EXPECT_EQ(pane.Selected(), "L1");
    EXPECT_EQ(pane.TakeClicks(), 1);
    EXPECT_TRUE(RollsOn(pane));
    EXPECT_EQ(pane.Selected(), "L1");
    EXPECT_EQ(pane.TakeClicks(), 0);

    // A finger that stays asks for the menu, by which it can take several.
    pane.List().scrollToTop();
    const QPoint third = PlaceOfRow(*pane.pane, 2);
    QTest::touchEvent(&pane.window, screen_.get()).press(0, third, &rows);
    QTRY_VERIFY_WITH_TIMEOUT(QApplication::activePopupWidget() != nullptr, 3000);
    QTest::touchEvent(&pane.window, screen_.get()).release(0, third, &rows);
    auto& menu = *qobject_cast<QMenu*>(QApplication::activePopupWidget());
    menu.actions().front()->trigger();
    menu.close();
    EXPECT_EQ(pane.Selected(), "L1 L2");
    EXPECT_EQ(pane.TakeClicks(), 1);

    QWidget& tree = *pane.Tree().viewport();
    const QModelIndex server = pane.Tree().model()->index(0, 0);
    Touch(tree, pane.Tree().visualRect(server).center(), 40);
    EXPECT_EQ(pane.TakeClicks(), 0) << "scrolled";
    Touch(tree, pane.Tree().visualRect(server).center());
    EXPECT_EQ(pane.browser.GetCurrentFolder(), u"");
    EXPECT_EQ(pane.TakeClicks(), 1);
}

} // namespace
} // namespace partkeep
