// The part browser's pane in a dialog's window, started as the component starts it and worked by real mouse and key
// events; what it answers is read through the contract.
#pragma once

#include "controls/kpd_key_manager.h"
#include "desktop/pane/browser_pane.h"
#include "desktop/pane/pane_widgets.h"
#include "tests/partlibrary/library_fixture.h"

#include <QTest>
#include <QToolButton>

#include <string>
#include <string_view>
#include <vector>

namespace partkeep {

// The window around the pane: sees the keys that reach the dialog.
class CKeyWindow : public QWidget {
public:
    std::vector<int> keys;

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        if (event->key() != Qt::Key_Control && event->key() != Qt::Key_Shift) {
            keys.push_back(event->key());
        }
    }
};

struct PaneStart {
    std::int32_t language = 1;
    std::u16string server = u"SRV1";
    std::u16string folder = u"Plates\\2008";
    std::int16_t filter = all_data_kinds;
};

class CPlayedPane {
public:
    CPlayedPane(const CTestLibraries& libraries, const PaneStart& start = {});

    // "P1 P10": the selected parts in the order of the contract.
    [[nodiscard]] std::string Selected();
    [[nodiscard]] std::string Shown(); // all names in the order of the list
    [[nodiscard]] std::string Cell(int row, PartColumn column);
    [[nodiscard]] std::string ProblemLine(); // empty while it is hidden
    [[nodiscard]] CServerTree& Tree() { return *pane->findChild<CServerTree*>(); }
    [[nodiscard]] CSearchBox& Search() { return *pane->findChild<CSearchBox*>(); }
    [[nodiscard]] CPartListView& List() { return pane->List(); }
    [[nodiscard]] QToolButton* Button(const QString& text);

    void ClickRow(int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void ClickBeside(); // below the last row
    void ClickFolder(const QString& server, const QString& name);
    void Key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier); // where the focus is
    void Type(const QString& text);
    void Settle();
    int TakeClicks(); // since the last time

    CKeyWindow window;
    CKPDKeyManager browser;
    CBrowserPane* pane = nullptr;

private:
    int clicks_ = 0;
};

} // namespace partkeep
