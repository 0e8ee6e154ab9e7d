// The part browser's pane worked by real mouse and key events: in a bare window, started as the component starts it,
// or in the dialog. What it answers is read through the contract.
#pragma once

#include "controls/kpd_key_manager.h"
#include "desktop/pane/browser_pane.h"
#include "desktop/pane/pane_widgets.h"
#include "tests/desktop/own_child.h"
#include "tests/desktop/played_user.h"
#include "tests/partlibrary/library_fixture.h"

#include <QHeaderView>
#include <QMenu>
#include <QTest>
#include <QToolButton>
#include <gtest/gtest.h>

namespace partkeep {

using namespace Qt::StringLiterals;

void Settle(CBrowserPane& pane);
// All that stands in the first column below an item, in its order.
[[nodiscard]] std::string NamesUnder(const QAbstractItemModel& model, const QModelIndex& item = {});
void ClickRow(CBrowserPane& pane, int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
void ClickInTree(CBrowserPane& pane, const QString& server, const QString& name);
[[nodiscard]] QPoint PlaceOfRow(CBrowserPane& pane, int row); // the middle of its name, in the list's viewport
[[nodiscard]] QToolButton* ButtonIn(CBrowserPane& pane, const QString& text); // by its spoken name
[[nodiscard]] QMenu& Filled(QMenu* menu);                                     // as it would be shown now

struct PaneStart {
    std::u16string server = u"SRV1";
    std::u16string folder = u"Plates\\2008";
    std::int16_t filter = all_data_kinds;
    bool configured = true;    // else nothing tells where part libraries are
    QStringList services = {}; // but these
};

class CPlayedPane {
public:
    CPlayedPane(const CTestLibraries& libraries, const PaneStart& start = {});

    [[nodiscard]] std::string Selected(); // "P1 P10": in the order of the contract
    [[nodiscard]] std::string Shown() { return NamesUnder(pane->Model()); }
    [[nodiscard]] std::string ProblemLine(); // empty while it is hidden
    [[nodiscard]] CServerTree& Tree() { return OwnChild<CServerTree>(*pane); }
    [[nodiscard]] CSearchBox& Search() { return OwnChild<CSearchBox>(*pane); }
    [[nodiscard]] CPartListView& List() { return pane->List(); }
    [[nodiscard]] QHeaderView& Header() { return pane->List().Header(); }

    void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier); // where the focus is
    void Type(const QString& text);
    int TakeClicks() { return std::exchange(clicks_, 0); } // since the last time

    QWidget window;
    CKPDKeyManager browser;
    CBrowserPane* pane = nullptr;

private:
    int clicks_ = 0;
};

// A test on the shop's libraries.
class PaneTest : public LibraryShop {
protected:
    const QString places_ = libraries_.Folder() + u"/places/browser.json"_s;
};

} // namespace partkeep
